#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quirepress {

class Library {
public:
    virtual ~Library() = default;                           // releases it
    virtual void* FindSymbol(const std::string& name) = 0;  // null when it has none of that name
};

class Libraries {
public:
    virtual ~Libraries() = default;
    // Null when it cannot be loaded; `error` is then the system's own words. A bare name is looked up as the
    // system does.
    virtual std::unique_ptr<Library> Load(std::string_view path, std::string& error) = 0;
};

}  // namespace quirepress
