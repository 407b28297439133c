#pragma once

#include <memory>
#include <string>

/// Puts a C locale with a decimal comma in force as long as it lives. Windows brings one along.
/// Elsewhere the machine need have none: the command localedef of the GNU C library makes one from
/// sources written here.
class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale(CommaLocale&&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    CommaLocale& operator=(CommaLocale&&) = delete;

    /// False where there is neither; then nothing has changed.
    bool inForce() const { return found; }

private:
    class Provider;

    std::string previousLocale;
    std::unique_ptr<Provider> provider;
    bool found;
};
