#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace quirepress {

// Owns a file descriptor; -1 when it has none.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(value) {}
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            Close();
            m_value = std::exchange(other.m_value, -1);
        }
        return *this;
    }
    ~Descriptor() { Close(); }

    int Value() const { return m_value; }
    bool IsOpen() const { return m_value >= 0; }
    int Release() { return std::exchange(m_value, -1); }
    // What close() answers; 0 when there was none.
    int Close() { return m_value < 0 ? 0 : close(std::exchange(m_value, -1)); }

private:
    int m_value = -1;
};

// Calls again for as long as a signal interrupts.
template <typename Call>
auto RetryInterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

}  // namespace quirepress
