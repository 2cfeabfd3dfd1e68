#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace quirepress {

class EventLoop;

struct TransferLimits {
    int connectMilliseconds = 30'000;   // until the connection stands, its encryption included
    int silentSeconds = 30;             // without a byte or an answer from the server
    int overallMilliseconds = 600'000;  // of one exchange
};

// What exchanges with servers need of their surroundings.
struct TransferPlace {
    EventLoop& loop;
    std::string certificates;  // a file with those that are trusted; empty: the system's
};

enum class TransferEnd { kDone, kFailed, kStopped };

// Exchanges with servers, one after another and each within its limits. What an exchange is about is set on
// its handle; the connection is kept for the next one.
class Transfer {
public:
    explicit Transfer(const TransferPlace& place);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    // Whether exchanges, encrypted ones too, are possible at all.
    static bool IsAvailable();

    // The library's handle, with nothing set but the limits; null when memory is short.
    void* BeginExchange(const TransferLimits& limits);

    // Runs what was set on the handle to its end; `keepGoing` is asked after every pass of the pump, and ends
    // it by false. May pump.
    TransferEnd RunExchange(const std::function<bool()>& keepGoing);

    // Why the last exchange failed, for the user; the server's own words included.
    std::string FailureText() const;

private:
    static std::size_t TakeReply(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static int OnProgress(void* transfer, std::int64_t, std::int64_t, std::int64_t, std::int64_t);
    int Drive();
    bool TakeResult(int& code);
    bool PumpAndAsk();
    void NoteBytes(std::int64_t bytes);
    bool IsSilentTooLong();

    TransferPlace m_place;
    void* m_exchanges = nullptr;
    void* m_exchange = nullptr;
    std::array<char, 256> m_errorText = {};  // filled by the library
    std::string m_lastReply;                 // of the server: "550 No such user"
    std::function<bool()> m_keepGoing;
    bool m_isStopped = false;
    bool m_isSilent = false;   // for longer than it may be
    long long m_lastPass = 0;  // milliseconds, of the pump
    long long m_silentMilliseconds = 0;
    long long m_lastSign = 0;  // milliseconds, of life of the server
    std::int64_t m_bytes = 0;  // to and from it, when it gave that sign
    int m_code = 0;
};

}  // namespace quirepress
