#pragma once

#include <string>
#include <string_view>

namespace quirepress {

// A folder of its own for one test, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_path; }  // without a separator at its end
    std::string PathOf(std::string_view name) const;
    // Writes `bytes` as file `name` (its folders are made); answers its path.
    std::string Write(std::string_view name, std::string_view bytes) const;
    std::string Read(std::string_view name) const;  // empty when there is none
    bool Has(std::string_view name) const;

private:
    std::string m_path;
};

}  // namespace quirepress
