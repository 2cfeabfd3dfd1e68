#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <string>

#include "platform/clock.h"
#include "platform/cups/cups_spooler.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/services.h"
#include "rig/loopback_server.h"
#include "rig/private_cups.h"

namespace quirepress {

// A spooler on whatever server CUPS_SERVER names.
class CupsFixture : public testing::Test {
protected:
    void UseServer(const std::string& address) { setenv("CUPS_SERVER", address.c_str(), 1); }

    // The result of Finish; -2 when it did not come to that.
    int PrintRaw(std::string_view printer, const std::string& name, std::string_view bytes) {
        const auto raw = spooler.OpenRawPrinter(printer, error);
        if (!raw || raw->StartDocument({name}) != 0) return -2;
        if (raw->WriteChunk(bytes.data(), bytes.size()) != 0) error = raw->SystemError();
        const int result = raw->Finish();
        jobId = raw->JobId();
        if (result != 0) error = raw->SystemError();
        return result;
    }

    std::vector<JobInfo> Jobs(std::string_view printer) {
        std::vector<JobInfo> jobs;
        EXPECT_EQ(spooler.ListJobs(printer, jobs), 0) << spooler.LastFailure().text;
        return jobs;
    }

    PrinterInfo Printer(std::string_view name) {
        std::vector<PrinterInfo> printers;
        EXPECT_EQ(spooler.ListPrinters(printers), 0) << spooler.LastFailure().text;
        for (const PrinterInfo& printer : printers)
            if (printer.name == name) return printer;
        return {};
    }

    // Milliseconds that a call takes; `passes` counts how often the loop was pumped meanwhile.
    template <typename Call>
    long long Measure(Call call) {
        passes = 0;
        const int task = services.loop->AddPumpTask([this] { return ++passes, false; });
        const long long start = services.loop->MonotonicMilliseconds();
        call();
        services.loop->RemovePumpTask(task);
        return services.loop->MonotonicMilliseconds() - start;
    }

    Services services = MakeSystemServices();
    CupsSpooler spooler{*services.files, *services.loop, *services.clock};
    int error = 0;
    std::int64_t jobId = 0;
    int passes = 0;
};

}  // namespace quirepress
