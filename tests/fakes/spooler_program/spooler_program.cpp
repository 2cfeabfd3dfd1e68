// A program that prints, for tests that end it or run several of it: spools documents into the first printer
// of a working folder while it delivers, and ends when the queue is empty.
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/embedded/embedded_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/machine.h"
#include "platform/network.h"
#include "platform/program_arguments.h"
#include "platform/services.h"

namespace quirepress {

namespace {

// Noted once the spooler has said that it keeps the document.
bool Note(Files& files, const std::string& path, const std::string& name) {
    FileResult result = FileResult::kDone;
    const auto file = files.OpenForWriting(path, OpenMode::kAppend, FileAccess::kShared, result);
    const std::string line = name + "\n";
    return file && file->Write(line.data(), line.size()) == FileResult::kDone;
}

bool SpoolOne(Spooler& spooler, const std::string& name, int size) {
    int error = 0;
    const auto raw = spooler.OpenRawPrinter("Quirepress", error);
    if (!raw || raw->StartDocument({name, 1}) != 0) return false;
    for (int i = 0; i < size; ++i)
        if (raw->WriteChunk(name.data(), name.size()) != 0) return false;
    return raw->Finish() == 0;
}

// FOLDER PREFIX COUNT: the documents are "PREFIX-i", each holding its name i times.
int PrintMany(const std::vector<std::string>& words) {
    const std::string& folder = words.at(0);
    const int count = std::atoi(words.at(2).c_str());
    Services services = MakeSystemServices();
    EmbeddedSpooler spooler(*services.files, *services.loop, *services.network, *services.clock,
                            *services.machine, folder);
    std::string message;
    if (spooler.Open(message) != 0) {
        std::cerr << message << '\n';
        return 4;
    }
    for (int i = 0; i < count; ++i) {
        const std::string name = words.at(1) + "-" + std::to_string(i);
        if (!SpoolOne(spooler, name, i)) return 2;
        if (!Note(*services.files, folder + "/closed.txt", name)) return 3;
        if (i % 3 == 0) services.loop->Pump();
    }
    while (!spooler.IsIdle()) services.loop->Wait(10);
    return 0;
}

}  // namespace

}  // namespace quirepress

int main(int argumentCount, char** arguments) {
    const std::vector<std::string> words = quirepress::ReadProgramArguments(argumentCount, arguments);
    return words.size() == 3 ? quirepress::PrintMany(words) : 9;
}
