#include "fakes/child_program/start_again.h"

#include "platform/machine.h"
#include "platform/services.h"

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace quirepress {

bool StartAgain(const std::vector<std::string>& words, bool detached) {
    const std::string program = MakeSystemServices().machine->ProgramPath();
    std::vector<const char*> arguments = {program.c_str()};
    for (const std::string& word : words) arguments.push_back(word.c_str());
    arguments.push_back(nullptr);
#ifdef _WIN32
    return _spawnv(detached ? _P_DETACH : _P_NOWAIT, program.c_str(), arguments.data()) != -1;
#else
    const pid_t first = fork();
    if (first != 0) return first > 0;
    if (detached) {
        setsid();
        if (fork() != 0) _exit(0);
    }
    execv(program.c_str(), const_cast<char* const*>(arguments.data()));
    _exit(127);
#endif
}

}  // namespace quirepress
