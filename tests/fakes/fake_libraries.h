#pragma once

#include <map>
#include <string>

#include "platform/libraries.h"

namespace quirepress {

// Libraries made of functions of the test program.
class FakeLibraries : public Libraries {
public:
    using Symbols = std::map<std::string, void*>;

    std::unique_ptr<Library> Load(std::string_view path, std::string& error) override;

    // A function as a symbol: {"Init", FakeLibraries::ToSymbol(&Init)}.
    template <typename Function>
    static void* ToSymbol(Function* function) {
        return reinterpret_cast<void*>(function);
    }

    std::map<std::string, Symbols> libraries;  // by path
    int loadedNow = 0;
};

}  // namespace quirepress
