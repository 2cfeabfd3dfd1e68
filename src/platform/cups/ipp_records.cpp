#include "platform/cups/ipp_records.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>

#include "platform/clock.h"
#include "platform/cups/ipp_status.h"

namespace quirepress {

namespace {

constexpr Instant kNanosecondsOfASecond = 1'000'000'000;

std::vector<std::string> Copies(ipp_attribute_t* attribute) {
    std::vector<std::string> texts;
    for (std::string_view text : IppTexts(attribute))
        if (!text.empty()) texts.emplace_back(text);
    return texts;
}

PrinterInfo ReadPrinter(const IppGroup& group) {
    PrinterInfo printer;
    int state = 0;
    bool isAccepting = true;
    std::vector<std::string_view> reasons;
    for (ipp_attribute_t* attribute : group) {
        const std::string_view name = ippGetName(attribute);
        if (name == "printer-name") printer.name = IppText(attribute);
        if (name == "device-uri") printer.port = IppText(attribute);
        if (name == "printer-make-and-model") printer.driver = IppText(attribute);
        if (name == "queued-job-count") printer.jobs = static_cast<std::uint32_t>(IppNumber(attribute));
        if (name == "printer-state") state = IppNumber(attribute);
        if (name == "printer-state-reasons") reasons = IppTexts(attribute);
        if (name == "printer-state-message") printer.statusText = IppText(attribute);
        if (name == "printer-is-accepting-jobs") isAccepting = IppFlag(attribute);
    }
    printer.statusBits = PrinterStatusOf(state, reasons, isAccepting);
    return printer;
}

struct IppJob {
    JobInfo info;
    bool isAtWork = false;
    bool isOver = false;
};

std::string PrinterOfAddress(std::string_view address) {
    std::array<char, HTTP_MAX_URI> resource = {};
    std::array<char, 64> scheme = {};
    std::array<char, 256> user = {};
    std::array<char, 256> host = {};
    int port = 0;
    const std::string uri(address);
    if (httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), scheme.size(), user.data(),
                        user.size(), host.data(), host.size(), &port, resource.data(),
                        resource.size()) < HTTP_URI_STATUS_OK)
        return {};
    const std::string path = resource.data();
    return path.substr(path.find_last_of('/') + 1);
}

// One attribute of a job; those of its state are gathered by the caller.
void ReadJobAttribute(ipp_attribute_t* attribute, std::string_view name, Clock& clock, JobInfo& job) {
    constexpr std::int64_t kOctets = 1024;
    if (name == "job-id") job.id = IppNumber(attribute);
    if (name == "job-name") job.document = IppText(attribute);
    if (name == "job-originating-user-name") job.user = IppText(attribute);
    if (name == "job-originating-host-name") job.machine = IppText(attribute);
    if (name == "document-format") job.dataType = IppText(attribute);
    if (name == "job-printer-state-message") job.statusText = IppText(attribute);
    if (name == "job-priority") job.priority = PriorityFromIpp(IppNumber(attribute));
    if (name == "job-impressions") job.totalPages = IppNumber(attribute);
    if (name == "job-impressions-completed") job.pagesPrinted = IppNumber(attribute);
    if (name == "job-k-octets") job.size = IppNumber(attribute) * kOctets;
    if (name == "job-printer-uri") job.printer = PrinterOfAddress(IppText(attribute));
    if (name == "time-at-creation")
        job.submitted = clock.ToLocal(IppNumber(attribute) * kNanosecondsOfASecond);
}

IppJob ReadJob(const IppGroup& group, Clock& clock) {
    IppJob job;
    int state = 0;
    std::vector<std::string_view> reasons;
    std::vector<std::string_view> printerReasons;
    for (ipp_attribute_t* attribute : group) {
        const std::string_view name = ippGetName(attribute);
        if (name == "job-state")
            state = IppNumber(attribute);
        else if (name == "job-state-reasons")
            reasons = IppTexts(attribute);
        else if (name == "job-printer-state-reasons")
            printerReasons = IppTexts(attribute);
        else
            ReadJobAttribute(attribute, name, clock, job.info);
    }
    job.info.statusBits = JobStatusOf(state, reasons, printerReasons);
    job.isAtWork = state == IPP_JSTATE_PROCESSING;
    job.isOver = state >= IPP_JSTATE_CANCELED;
    return job;
}

std::vector<IppJob> ReadEveryJob(ipp_t* answer, Clock& clock) {
    std::vector<IppJob> read;
    for (const IppGroup& group : IppGroups(answer, IPP_TAG_JOB)) {
        read.push_back(ReadJob(group, clock));
        if (read.back().info.id <= 0) read.pop_back();
    }
    return read;
}

}  // namespace

const std::vector<const char*> kPrinterAttributes = {"printer-name",           "device-uri",
                                                     "printer-make-and-model", "queued-job-count",
                                                     "printer-state",          "printer-state-reasons",
                                                     "printer-state-message",  "printer-is-accepting-jobs"};

const std::vector<const char*> kFactAttributes = {"printer-is-accepting-jobs", "document-format-supported",
                                                  "media-default", "media-source-supported", "member-names"};

const std::vector<const char*> kJobAttributes = {"job-id",
                                                 "job-name",
                                                 "job-originating-user-name",
                                                 "job-originating-host-name",
                                                 "document-format",
                                                 "job-priority",
                                                 "job-printer-state-message",
                                                 "job-printer-state-reasons",
                                                 "job-impressions",
                                                 "job-state-reasons",
                                                 "job-impressions-completed",
                                                 "job-k-octets",
                                                 "job-printer-uri",
                                                 "time-at-creation",
                                                 "job-state"};

std::vector<PrinterInfo> ReadPrinters(ipp_t* answer) {
    std::vector<PrinterInfo> printers;
    for (const IppGroup& group : IppGroups(answer, IPP_TAG_PRINTER)) {
        PrinterInfo printer = ReadPrinter(group);
        if (!printer.name.empty()) printers.push_back(std::move(printer));
    }
    return printers;
}

CupsPrinterFacts ReadPrinterFacts(ipp_t* answer) {
    CupsPrinterFacts facts;
    for (const IppGroup& group : IppGroups(answer, IPP_TAG_PRINTER)) {
        for (ipp_attribute_t* attribute : group) {
            const std::string_view name = ippGetName(attribute);
            if (name == "printer-is-accepting-jobs") facts.isAccepting = IppFlag(attribute);
            if (name == "document-format-supported") facts.formats = Copies(attribute);
            // A queue without a driver knows of no media.
            if (name == "media-default") facts.renders = true;
            if (name == "media-source-supported") facts.sources = Copies(attribute);
            if (name == "member-names") facts.members = Copies(attribute);
        }
    }
    return facts;
}

std::vector<JobInfo> ReadJobs(ipp_t* answer, Clock& clock) {
    std::vector<IppJob> read = ReadEveryJob(answer, clock);
    std::stable_sort(read.begin(), read.end(), [](const IppJob& left, const IppJob& right) {
        if (left.isAtWork != right.isAtWork) return left.isAtWork;
        if (left.info.priority != right.info.priority) return left.info.priority > right.info.priority;
        return left.info.id < right.info.id;
    });
    std::vector<JobInfo> jobs;
    jobs.reserve(read.size());
    for (IppJob& job : read) {
        job.info.position = static_cast<int>(jobs.size()) + 1;
        jobs.push_back(std::move(job.info));
    }
    return jobs;
}

const std::vector<const char*> kOverJobAttributes = {"job-id",
                                                     "job-name",
                                                     "job-printer-state-message",
                                                     "job-impressions",
                                                     "job-impressions-completed",
                                                     "job-state",
                                                     "job-printer-uri"};

std::vector<JobInfo> ReadOverJobs(ipp_t* answer, Clock& clock) {
    std::vector<JobInfo> jobs;
    for (IppJob& job : ReadEveryJob(answer, clock))
        if (job.isOver) jobs.push_back(std::move(job.info));
    std::sort(jobs.begin(), jobs.end(),
              [](const JobInfo& left, const JobInfo& right) { return left.id < right.id; });
    return jobs;
}

std::int64_t HighestJobNumber(ipp_t* answer) {
    std::int64_t highest = 0;
    for (const IppGroup& group : IppGroups(answer, IPP_TAG_JOB))
        for (ipp_attribute_t* attribute : group)
            if (std::string_view(ippGetName(attribute)) == "job-id")
                highest = std::max<std::int64_t>(highest, IppNumber(attribute));
    return highest;
}

std::string PrinterOfJob(ipp_t* answer) {
    return PrinterOfAddress(IppText(ippFindAttribute(answer, "job-printer-uri", IPP_TAG_URI)));
}

}  // namespace quirepress
