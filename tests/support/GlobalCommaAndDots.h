#pragma once

#include <locale>
#include <string>

/// Puts a C++ global locale with a decimal comma, and with dots between groups of three digits, in
/// force as long as it lives. It has no name, so that the C locale stays.
class GlobalCommaAndDots {
public:
    GlobalCommaAndDots()
        : previous(std::locale::global(std::locale(std::locale::classic(), new CommaAndDots))) {}
    ~GlobalCommaAndDots() { std::locale::global(previous); }
    GlobalCommaAndDots(const GlobalCommaAndDots&) = delete;
    GlobalCommaAndDots(GlobalCommaAndDots&&) = delete;
    GlobalCommaAndDots& operator=(const GlobalCommaAndDots&) = delete;
    GlobalCommaAndDots& operator=(GlobalCommaAndDots&&) = delete;

private:
    class CommaAndDots : public std::numpunct<char> {
    protected:
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale previous;
};
