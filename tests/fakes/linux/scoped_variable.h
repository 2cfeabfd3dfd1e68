#pragma once

#include <stdlib.h>
#include <time.h>

#include <optional>
#include <string>

namespace quirepress {

// Sets an environment variable for the time of a test.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value) : m_name(name) {
        const char* const before = getenv(name);
        if (before != nullptr) m_before = before;
        setenv(name, value.c_str(), 1);
        tzset();
    }
    ~ScopedVariable() {
        if (m_before)
            setenv(m_name, m_before->c_str(), 1);
        else
            unsetenv(m_name);
        tzset();
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_before;
};

}  // namespace quirepress
