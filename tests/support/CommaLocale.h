#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// Puts a C locale with a decimal comma in force as long as it lives. The machine need have none:
/// the command localedef of the GNU C library makes one from sources written here.
class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale(CommaLocale&&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    CommaLocale& operator=(CommaLocale&&) = delete;

    /// False where there is no such command; then nothing has changed.
    bool inForce() const { return made; }

private:
    void makeLocale() const;

    std::string previousLocale;
    std::optional<std::string> previousPath;
    std::filesystem::path folder;
    bool made = false;
};
