#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/fake_network.h"
#include "fakes/surroundings.h"
#include "platform/embedded/embedded_spooler.h"

namespace quirepress {

// Hands over `bytes` in chunks of at most 1000; the job's id, or -1.
std::int64_t SpoolDocument(Spooler& spooler, std::string_view printer, std::string_view name,
                           std::string_view bytes = "bytes");

// The files in a folder by their names; those of folders in it are left out.
std::map<std::string, std::string> ReadFolder(Files& files, const std::string& path);

// A working folder with virtual time and a network in memory, and the spooler on it.
class SpoolerBench : public testing::Test, protected Surroundings {
protected:
    SpoolerBench() { Restart(); }

    // Another program on the same folder, after this one's end.
    void Restart();
    void MakePrinter(std::string_view name, std::string_view port);
    std::int64_t Spool(std::string_view printer, std::string_view name, std::string_view bytes = "bytes") {
        return SpoolDocument(*m_spooler, printer, name, bytes);
    }
    // Pumps until nothing moves any more; false when that takes an hour.
    bool Deliver();
    std::vector<JobInfo> Jobs(std::string_view printer);
    JobInfo FirstJob(std::string_view printer);  // an empty one when there is none
    std::vector<std::string> Documents(std::string_view printer);
    PrinterInfo Printer(std::string_view name);
    std::map<std::string, std::string> Output(std::string_view printer = "Quirepress");
    std::string JobsFolder(std::string_view printer = "Quirepress") {
        return folder.PathOf("Printers/" + std::string(printer) + "/Jobs");
    }

    FakeNetwork m_network;
    std::unique_ptr<EmbeddedSpooler> m_spooler;
    std::string m_message;
};

}  // namespace quirepress
