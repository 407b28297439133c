#include "libvexstream/Recording.h"

namespace vextrace {

void Recording::feed(std::string_view bytes, timeStamp_t arrival) {
    if (stamps == StampSource::ARRIVAL) {
        arrivals.note(counters().bytesRead, arrival);
    }
    framer.feed(bytes);
}

std::optional<Recording::Step> Recording::next() {
    const std::optional<Framer::Sentence> sentence = framer.next();
    if (!sentence) {
        return std::nullopt;
    }
    return Step{*sentence,
                epochs.add(sentence->text, sentence->checksum, arrivals.of(sentence->offset))};
}

}  // namespace vextrace
