#pragma once

#include <string>
#include <string_view>

#include "settings/settings_file.h"

namespace quirepress {

// The value of a monitored folder's key in setup.ini, where its line is KEY;INDEX;VALUE; the later of two
// lines counts. Empty when there is none.
std::string ReadMonitorValue(const SettingsPlace& place, std::string_view key, int folder);

}  // namespace quirepress
