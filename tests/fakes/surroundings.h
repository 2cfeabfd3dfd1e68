#pragma once

#include <memory>
#include <string>

#include "fakes/fake_clock.h"
#include "fakes/fake_event_loop.h"
#include "fakes/fake_machine.h"
#include "fakes/fake_processes.h"
#include "fakes/fake_prompts.h"
#include "fakes/faulty_files.h"
#include "fakes/temporary_folder.h"
#include "logs/debug_log.h"
#include "platform/services.h"

namespace quirepress {

// What a unit test of a feature needs around it: a folder of its own, real files (that can be made to fail),
// virtual time, and fakes for the rest.
struct Surroundings {
    Services system = MakeSystemServices();
    TemporaryFolder folder;
    FaultyFiles files{*system.files};
    FakeEventLoop loop;
    FakeClock clock{loop};
    FakePrompts prompts;
    FakeMachine machine;
    FakeProcesses processes;
    DebugLog debugLog;  // off until opened

    // The folder in the form of the working folder, with a separator at its end.
    std::string Home() const { return folder.PathOf(""); }
};

}  // namespace quirepress
