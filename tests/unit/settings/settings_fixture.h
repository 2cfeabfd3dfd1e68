#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "base/path.h"
#include "base/text.h"
#include "fakes/fake_prompts.h"
#include "fakes/faulty_files.h"
#include "fakes/temporary_folder.h"
#include "platform/services.h"
#include "settings/settings_file.h"

namespace quirepress {

// A working folder with real files that can be made to fail.
class SettingsTest : public testing::Test {
protected:
    // What a file must hold that is written as `text`, with LF at its line ends.
    static std::string AsWritten(std::string_view text) { return ReplaceAll(text, "\n", PlatformLineEnd()); }

    Services m_system = MakeSystemServices();
    FaultyFiles m_files{*m_system.files};
    TemporaryFolder m_folder;
    FakePrompts m_prompts;
    SettingsPlace m_place{m_files, m_prompts, m_folder.PathOf("")};
};

}  // namespace quirepress
