#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vextrace::tools {

/// A number of the head, as texts.
struct Fact {
    std::string name;
    std::string value;
    std::string detail;   ///< smaller, below it; may be empty
    bool isLong = false;  ///< takes a line of its own
};

/// A row of the table of sentences, as texts.
struct SentenceRow {
    std::string code, count, wrong, first, last;
    bool hasWrong = false;
};

/// What a page holds. Texts may hold any characters, but where it is said that they are HTML.
struct Page {
    std::string title;
    std::string span;                ///< of time
    std::vector<std::string> notes;  ///< what somebody must know: damage, what was left out
    std::vector<Fact> facts;
    std::string track;   ///< HTML: the picture and what belongs to it
    std::string extent;  ///< how many fixes the pictures show
    std::vector<SentenceRow> sentences;
    std::string sentencesLeftOut;  ///< below the table; may be empty
    std::string data;              ///< of pageData(): JSON that is safe in HTML

    /// The whole page.
    std::string text() const;
};

}  // namespace vextrace::tools
