#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Keeps the first difference of many comparisons, and where it was found.
class Comparison {
public:
    /// Names a place in the texts of the differences found while this object lives.
    class Place {
    public:
        Place(Comparison& comparison, const std::string& name) : places(comparison.places) {
            places.push_back(name);
        }
        ~Place() { places.pop_back(); }
        Place(const Place&) = delete;
        Place(Place&&) = delete;
        Place& operator=(const Place&) = delete;
        Place& operator=(Place&&) = delete;

    private:
        std::vector<std::string>& places;
    };

    void equal(const char* what, const std::string& library, const std::string& model);
    void equal(const char* what, uint64_t library, uint64_t model);

    void equalAnswers(const char* what, bool library, bool model);

    /// Bit by bit: zeros differ by sign, and so do NaNs by sign and payload.
    void equalBits(const char* what, double library, double model);

    /// The same for results of arithmetic. Only on processors that compute with more precision
    /// than double's, where the compiler chooses when to round, the last digits may differ.
    void equalResults(const char* what, double library, double model);

    void holds(const char* what, bool condition);

    bool failed() const { return !difference.empty(); }

    /// The first difference, empty when there is none.
    const std::string& text() const { return difference; }

private:
    void found(const std::string& what);
    void contrast(const char* what, const std::string& library, const std::string& model);

    std::vector<std::string> places;
    std::string difference;
};
