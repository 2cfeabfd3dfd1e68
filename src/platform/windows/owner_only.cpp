#include "platform/windows/owner_only.h"

#include <sddl.h>

#include <array>
#include <string>

#include "platform/windows/system_handle.h"

namespace quirepress {
namespace {

// Empty when the system does not tell.
std::wstring ReadUserId() {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return {};
    const SystemHandle token = TakeHandle(opened);
    alignas(TOKEN_USER) std::array<char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> buffer;
    DWORD size = 0;
    wchar_t* text = nullptr;
    if (!GetTokenInformation(token.get(), TokenUser, buffer.data(), buffer.size(), &size) ||
        !ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(buffer.data())->User.Sid, &text))
        return {};
    std::wstring id = text;
    LocalFree(text);
    return id;
}

}  // namespace

OwnerOnlySecurity::OwnerOnlySecurity() {
    m_attributes.nLength = sizeof m_attributes;
    const std::wstring user = ReadUserId();
    if (user.empty()) return;
    // Protected: takes over nothing from the folder. One entry: all access for the user.
    const std::wstring description = L"D:P(A;;FA;;;" + user + L")";
    ConvertStringSecurityDescriptorToSecurityDescriptorW(description.c_str(), SDDL_REVISION_1,
                                                         &m_attributes.lpSecurityDescriptor, nullptr);
}

OwnerOnlySecurity::~OwnerOnlySecurity() {
    LocalFree(m_attributes.lpSecurityDescriptor);
}

bool OwnerOnlySecurity::ApplyTo(HANDLE file) const {
    return m_attributes.lpSecurityDescriptor != nullptr &&
           SetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                                   m_attributes.lpSecurityDescriptor);
}

}  // namespace quirepress
