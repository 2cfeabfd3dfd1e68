#pragma once

#include <windows.h>

namespace quirepress {

// The permissions of a file that is for the user alone who runs the program.
class OwnerOnlySecurity {
public:
    OwnerOnlySecurity();
    ~OwnerOnlySecurity();
    OwnerOnlySecurity(const OwnerOnlySecurity&) = delete;
    OwnerOnlySecurity& operator=(const OwnerOnlySecurity&) = delete;

    SECURITY_ATTRIBUTES* Attributes() { return &m_attributes; }  // for a file that is created
    bool ApplyTo(HANDLE file) const;                             // for one that is there already

private:
    SECURITY_ATTRIBUTES m_attributes = {};
};

}  // namespace quirepress
