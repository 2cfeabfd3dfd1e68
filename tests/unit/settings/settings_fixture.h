#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/path.h"
#include "base/text.h"
#include "fakes/surroundings.h"
#include "settings/settings_file.h"

namespace quirepress {

// A working folder with real files that can be made to fail.
class SettingsTest : public testing::Test, protected Surroundings {
protected:
    // What a file must hold that is written as `text`, with LF at its line ends.
    static std::string AsWritten(std::string_view text) { return ReplaceAll(text, "\n", PlatformLineEnd()); }

    SettingsPlace m_place{files, prompts, folder.PathOf("")};
};

}  // namespace quirepress
