#include "tests/support/CommaLocale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <optional>
#include <system_error>

#ifdef _WIN32

class CommaLocale::Provider {
public:
    static const char* name() { return "German"; }
};

#else

namespace {

void writeLocaleSource(const std::filesystem::path& file) {
    std::ofstream(file) << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \"\"\ngrouping -1\n"
                           "END LC_NUMERIC\n";
}

// The character maps of the C library come in a package of their own, which may be absent.
void writeCharacterMap(const std::filesystem::path& file) {
    std::ofstream charmap(file);
    charmap << "<code_set_name> ASCII\n<mb_cur_max> 1\n<comment_char> %\n<escape_char> /\n"
               "CHARMAP\n"
            << std::hex << std::setfill('0');
    for (int c = 0; c < 128; ++c) {
        charmap << "<U" << std::setw(4) << c << "> /x" << std::setw(2) << c << " character\n";
    }
    charmap << "END CHARMAP\n";
}

// Under emulation the command runs on another processor than the test.
const char* byteOrderOption() {
    const uint16_t one = 1;
    return *reinterpret_cast<const uint8_t*>(&one) == 1 ? "--little-endian" : "--big-endian";
}

}  // namespace

/// Makes the locale in a folder of its own, where the C library looks as long as this lives.
class CommaLocale::Provider {
public:
    Provider();
    ~Provider();
    Provider(const Provider&) = delete;
    Provider(Provider&&) = delete;
    Provider& operator=(const Provider&) = delete;
    Provider& operator=(Provider&&) = delete;

    static const char* name() { return "comma"; }

private:
    void makeLocale() const;

    std::optional<std::string> previousPath;
    std::filesystem::path folder;
};

CommaLocale::Provider::Provider() {
    if (const char* path = std::getenv("LOCPATH")) {
        previousPath = path;
    }
    std::string pattern = testing::TempDir() + "vextrace-locale-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        return;
    }
    folder = pattern;
    makeLocale();
    setenv("LOCPATH", folder.c_str(), 1);
}

CommaLocale::Provider::~Provider() {
    if (previousPath) {
        setenv("LOCPATH", previousPath->c_str(), 1);
    } else {
        unsetenv("LOCPATH");
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void CommaLocale::Provider::makeLocale() const {
    writeLocaleSource(folder / "source");
    writeCharacterMap(folder / "charmap");
    const std::string command = "cd '" + folder.string() + "' && localedef --no-archive --force " +
                                byteOrderOption() + " -f ./charmap -i ./source ./comma >log 2>&1";
    // Complains of the categories left out, but makes the one that counts.
    const int status = std::system(command.c_str());  // NOLINT(cert-env33-c): the test's own text
    static_cast<void>(status);
}

#endif

CommaLocale::CommaLocale()
    : previousLocale(std::setlocale(LC_NUMERIC, nullptr)),
      provider(std::make_unique<Provider>()),
      found(std::setlocale(LC_NUMERIC, Provider::name()) != nullptr) {}

CommaLocale::~CommaLocale() {
    static_cast<void>(std::setlocale(LC_NUMERIC, previousLocale.c_str()));
}
