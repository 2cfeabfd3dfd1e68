#include "platform/terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>

#include "platform/interrupts.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/make_services.h"

namespace quirepress {

namespace {

// A stream that somebody has made non-blocking is waited for all the same.
bool WaitUntilReady(int stream, short events) {
    pollfd ready = {stream, events, 0};
    return errno == EAGAIN && RetryInterrupted([&] { return poll(&ready, 1, -1); }) > 0;
}

bool WriteAll(int stream, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = RetryInterrupted([&] { return write(stream, text.data(), text.size()); });
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (!WaitUntilReady(stream, POLLOUT)) {
            return false;
        }
    }
    return true;
}

class LinuxTerminal : public Terminal {
public:
    bool OutputIsTerminal() override { return isatty(STDOUT_FILENO) == 1; }
    bool ErrorsAreTerminal() override { return isatty(STDERR_FILENO) == 1; }
    bool InputIsTerminal() override { return isatty(STDIN_FILENO) == 1; }

    int Columns() override {
        winsize size = {};
        return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
    }

    bool WriteOutput(std::string_view text) override { return WriteAll(STDOUT_FILENO, text); }
    bool WriteErrors(std::string_view text) override { return WriteAll(STDERR_FILENO, text); }

    bool ReadLine(std::string& line) override {
        std::size_t searched = 0;
        for (;;) {
            const std::size_t end = m_input.find('\n', searched);
            if (end != std::string::npos) return TakeLine(end, end + 1, line);
            searched = m_input.size();
            if (!ReadMore()) return !m_input.empty() && TakeLine(m_input.size(), m_input.size(), line);
        }
    }

private:
    static constexpr std::size_t kLongestLine = 1 << 20;

    bool TakeLine(std::size_t end, std::size_t next, std::string& line) {
        if (end > 0 && m_input[end - 1] == '\r') --end;
        line = m_input.substr(0, end);
        m_input.erase(0, next);
        return true;
    }

    // False at the end of the input, after an interrupt, and when a line is none.
    bool ReadMore() {
        const int interruptsBefore = InterruptCount();
        std::array<char, 4096> bytes = {};
        while (m_input.size() < kLongestLine) {
            const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
            if (count > 0) m_input.append(bytes.data(), static_cast<std::size_t>(count));
            if (count >= 0) return count > 0;
            const bool again =
                errno == EINTR ? InterruptCount() == interruptsBefore : WaitUntilReady(STDIN_FILENO, POLLIN);
            if (!again) return false;
        }
        return false;
    }

    std::string m_input;  // read, and not yet taken
};

}  // namespace

std::unique_ptr<Terminal> MakeTerminal() {
    return std::make_unique<LinuxTerminal>();
}

}  // namespace quirepress
