// Calls through a stack that is aligned to 4 bytes only (32-bit builds).
#pragma once

#include <bit>
#include <vector>

#include "noxtypes.h"

extern "C" int call_misaligned(void (*target)(), const int *words, int count, int shift);

namespace test {

inline void appendWord(std::vector<int> &words, int value) { words.push_back(value); }
inline void appendWord(std::vector<int> &words, float value) { words.push_back(std::bit_cast<int>(value)); }
inline void appendWord(std::vector<int> &words, NoxiSize value) {
    words.push_back(value.width);
    words.push_back(value.height);
}
template <class T>
void appendWord(std::vector<int> &words, T *pointer) {
    words.push_back(static_cast<int>(reinterpret_cast<long>(pointer)));
}

/// Calls a C function with its stack pointer `shift` bytes off.
template <class Function, class... Argument>
NoxStatus callMisaligned(int shift, Function *function, Argument... arguments) {
    std::vector<int> words;
    (appendWord(words, arguments), ...);
    return static_cast<NoxStatus>(
        call_misaligned(reinterpret_cast<void (*)()>(function), words.data(), int(words.size()), shift));
}

} // namespace test
