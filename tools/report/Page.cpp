#include "tools/report/Page.h"

#include <fmt/core.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "libvextrace/version.h"
#include "tools/io/escape.h"
#include "tools/report/pageTemplate.h"

namespace vextrace::tools {

namespace {

std::string notesHtml(const std::vector<std::string>& notes) {
    if (notes.empty()) {
        return "";
    }
    std::string items;
    for (const std::string& note : notes) {
        items += fmt::format("<li>{}</li>\n", html(note));
    }
    return fmt::format(
        "<div class=\"notes\" role=\"note\">\n<p>To be known:</p>\n<ul>\n{}</ul>\n</div>", items);
}

std::string factsHtml(const std::vector<Fact>& facts) {
    std::string text;
    for (const Fact& fact : facts) {
        const std::string detail =
            fact.detail.empty() ? "" : fmt::format("<small>{}</small>", html(fact.detail));
        text += fmt::format("<li{}><span>{}</span><b>{}</b>{}</li>\n",
                            fact.isLong ? " class=\"wide\"" : "", html(fact.name), html(fact.value),
                            detail);
    }
    return text;
}

std::string sentencesHtml(const Page& page) {
    if (page.sentences.empty()) {
        return "<p>None.</p>";
    }
    std::string rows;
    for (const SentenceRow& row : page.sentences) {
        rows += fmt::format(
            "<tr><th scope=\"row\">{}</th><td class=\"number\">{}</td><td "
            "class=\"number{}\">{}</td>"
            "<td>{}</td><td>{}</td></tr>\n",
            html(row.code), html(row.count), row.hasWrong ? " wrong" : "", html(row.wrong),
            html(row.first), html(row.last));
    }
    const std::string rest = page.sentencesLeftOut.empty()
                                 ? ""
                                 : fmt::format("<p>{}</p>\n", html(page.sentencesLeftOut));
    return fmt::format(
        "<div class=\"scroll\" tabindex=\"0\" role=\"region\" "
        "aria-labelledby=\"sentences-heading\">"
        "\n<table>\n<thead><tr><th scope=\"col\">Code</th><th scope=\"col\" class=\"number\">Count"
        "</th><th scope=\"col\" class=\"number\">Wrong checksum</th><th scope=\"col\">First, UTC"
        "</th><th scope=\"col\">Last, UTC</th></tr></thead>\n<tbody>\n{}</tbody>\n</table>\n"
        "</div>\n{}",
        rows, rest);
}

using Parts = std::vector<std::pair<std::string_view, std::string>>;

// The template with its {{name}}s replaced. What is put in is not looked at again.
std::string filled(std::string_view form, const Parts& parts) {
    std::string result;
    for (size_t open = form.find("{{"); open != std::string_view::npos; open = form.find("{{")) {
        const auto part = std::find_if(parts.begin(), parts.end(), [&](const auto& candidate) {
            const std::string_view name = form.substr(open + 2, candidate.first.size() + 2);
            return name == std::string(candidate.first) + "}}";
        });
        const bool isName = part != parts.end();
        const size_t end = open + 2 + (isName ? part->first.size() + 2 : 0);
        result += form.substr(0, isName ? open : end);
        if (isName) {
            result += part->second;
        }
        form.remove_prefix(end);
    }
    return result.append(form);
}

}  // namespace

std::string Page::text() const {
    const std::string program = fmt::format("vextrace {}.{}.{}", VEXTRACE_VERSION_MAJOR,
                                            VEXTRACE_VERSION_MINOR, VEXTRACE_VERSION_PATCH);
    return filled(pageTemplate(), {{"program", program},
                                   {"title", html(title)},
                                   {"span", html(span)},
                                   {"notes", notesHtml(notes)},
                                   {"facts", factsHtml(facts)},
                                   {"track", track},
                                   {"extent", html(extent)},
                                   {"sentences", sentencesHtml(*this)},
                                   {"data", data}});
}

}  // namespace vextrace::tools
