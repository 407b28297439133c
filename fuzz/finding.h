#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

/// Ends the fuzzer, which then keeps the input, when there is a difference to tell of.
inline void stopAt(const std::string& difference) {
    if (!difference.empty()) {
        std::cerr << "Library and model differ: " << difference << std::endl;
        std::abort();
    }
}
