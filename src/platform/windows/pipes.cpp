#include "platform/windows/pipes.h"

#include <windows.h>

#include <objbase.h>

namespace quirepress {
namespace {

constexpr DWORD kPipeSize = 65536;

// Only the program's end of a pipe is passed on to programs.
SECURITY_ATTRIBUTES PassedOn() {
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

// Anonymous pipes know no writing without waiting; a named one does. Nobody else guesses the name.
std::wstring MakePipeName() {
    GUID id = {};
    wchar_t text[40] = {};
    if (FAILED(CoCreateGuid(&id)) || StringFromGUID2(id, text, 40) == 0) return {};
    return std::wstring(L"\\\\.\\pipe\\quirepress-") + text;
}

}  // namespace

SystemHandle OutputPipe::Open() {
    SECURITY_ATTRIBUTES passedOn = PassedOn();
    HANDLE ours = nullptr;
    HANDLE theirs = nullptr;
    if (!CreatePipe(&ours, &theirs, &passedOn, kPipeSize)) return nullptr;
    m_ours = TakeHandle(ours);
    SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0);
    return TakeHandle(theirs);
}

bool OutputPipe::Read(std::string& output) {
    DWORD waiting = 0;
    while (PeekNamedPipe(m_ours.get(), nullptr, 0, nullptr, &waiting, nullptr)) {
        if (waiting == 0) return true;
        const std::size_t before = output.size();
        output.resize(before + waiting);
        DWORD read = 0;
        const BOOL done = ReadFile(m_ours.get(), output.data() + before, waiting, &read, nullptr);
        output.resize(before + read);
        if (!done) return false;
    }
    return false;
}

// The system holds on to both until the write is over.
struct InputPipe::PendingWrite {
    std::string data;
    OVERLAPPED state = {};
};

InputPipe::InputPipe() = default;

InputPipe::~InputPipe() {
    if (!m_ours || m_writes.empty()) return;
    CancelIo(m_ours.get());
    for (const auto& write : m_writes) {
        DWORD written = 0;
        GetOverlappedResult(m_ours.get(), &write->state, &written, TRUE);
    }
}

SystemHandle InputPipe::Open() {
    const std::wstring name = MakePipeName();
    m_ours = TakeHandle(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_OUTBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeSize, kPipeSize, 0, nullptr));
    if (!m_ours) return nullptr;
    SECURITY_ATTRIBUTES passedOn = PassedOn();
    return TakeHandle(CreateFileW(name.c_str(), GENERIC_READ, 0, &passedOn, OPEN_EXISTING, 0, nullptr));
}

bool InputPipe::Write(std::string_view data) {
    ForgetWritten();
    if (!m_ours || m_closing) return false;
    if (data.empty()) return true;
    auto write = std::make_unique<PendingWrite>();
    write->data = data;
    // Writes are carried out in the order in which they were begun.
    const BOOL done =
        WriteFile(m_ours.get(), write->data.data(), static_cast<DWORD>(data.size()), nullptr, &write->state);
    if (!done && GetLastError() != ERROR_IO_PENDING) {
        m_ours.reset();
        return false;
    }
    m_writes.push_back(std::move(write));
    return true;
}

void InputPipe::CloseWhenRead() {
    m_closing = true;
    ForgetWritten();
}

void InputPipe::ForgetWritten() {
    while (!m_writes.empty() && HasOverlappedIoCompleted(&m_writes.front()->state)) {
        DWORD written = 0;
        const bool done = GetOverlappedResult(m_ours.get(), &m_writes.front()->state, &written, FALSE);
        m_writes.pop_front();
        m_closing = m_closing || !done;  // nobody reads any more
    }
    if (m_closing && m_writes.empty()) m_ours.reset();
}

}  // namespace quirepress
