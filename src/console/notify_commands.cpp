#include <memory>
#include <nlohmann/json.hpp>

#include "app/application.h"
#include "automation/notifications.h"
#include "base/format.h"
#include "base/path.h"
#include "base/text.h"
#include "console/commands.h"
#include "console/context.h"
#include "console/progress.h"
#include "platform/interrupts.h"
#include "platform/terminal.h"
#include "transport/download.h"
#include "transport/download_log.h"

namespace quirepress {

namespace {

struct NotifyRequest {
    int kind = 0;
    std::string text;
    std::string attachment;
    bool isTest = false;
};

std::string DescribeReport(const NotificationReport& report) {
    if (report.failed > 0) return "Not sent: " + report.failure + ".";
    if (report.isOff) return "Nothing was sent: email_setup.ini does not switch this kind on.";
    if (report.sent == 0) return "Nothing was sent: email_setup.ini names no recipient (EMAILTO).";
    return Format("Sent to %d recipient(s).", report.sent);
}

int SendNotice(Context& context, const NotifyRequest& request) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    Notifications& notifications = application->Notices();
    if (request.isTest)
        notifications.SendTestMessage();
    else
        notifications.SendNotification(request.kind, request.text, request.attachment);
    const NotificationReport& report = notifications.LastReport();
    // A test that nobody gets has shown nothing.
    const bool isDone = report.failed == 0 && (report.sent > 0 || !request.isTest);
    // What a test has shown need not be said again.
    if (context.WantsJson() || !request.isTest || report.sent + report.failed == 0)
        context.PrintResult(isDone ? 0 : -1, DescribeReport(report));
    if (InterruptCount() > 0) return kExitStopped;
    return isDone ? kExitDone : kExitNotAllDone;
}

struct FetchRequest {
    std::string address;
    std::string folder;
};

int PrintDownload(Context& context, const DownloadResult& result) {
    if (result.end == TransferEnd::kDone) {
        if (context.WantsJson())
            context.PrintJson({{"result", 0}, {"message", ""}, {"path", ToUtf8ForDisplay(result.path)}});
        else
            context.Print(ToPrintableLine(result.path) + "\n");
        return kExitDone;
    }
    context.PrintResult(-1, "The file was not fetched: " + result.failure + ".");
    return result.end == TransferEnd::kStopped ? kExitStopped : kExitNotAllDone;
}

int Fetch(Context& context, const FetchRequest& request) {
    Application* application = context.OpenApplication();
    if (application == nullptr) return kExitNotAllDone;
    ProgressLine progress(*context.System().terminal, application->List(), context.ErrorsHaveColours());
    DownloadRequest download;
    download.address = request.address;
    download.folder = request.folder;
    download.keepGoing = [] { return InterruptCount() == 0; };
    download.showBytes = [&](std::int64_t done, std::int64_t total) {
        constexpr int kBarWidth = 30;
        const double share = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0;
        progress.Show((total > 0 ? RenderBar(share, kBarWidth) + " " : "") + Format("%d kB", done / 1000));
    };
    const DownloadResult result = FetchDownload(*context.System().files, application->Transfers(), download);
    LogFtpDownload(application->TransferRecords(), download, result);
    progress.Clear();
    return PrintDownload(context, result);
}

void DefineNotify(CommandSet& commands) {
    CLI::App* notify =
        commands.Add(commands.m_program, "notify", "Send a notification by mail, as email_setup.ini says",
                     {"qpr settings set email EMAILTO office@example.org",
                      "qpr settings set email SMTP ssl:mail.example.org", "qpr notify --test",
                      "qpr notify 4 \"The invoices are printed\" --attach report.pdf"});
    auto request = std::make_shared<NotifyRequest>();
    CLI::Option* kind =
        notify
            ->add_option(
                "KIND", request->kind,
                "1 scheduled job finished, 2 print error, 3 printer alert, 4 prints finished, 5 files "
                "handled after printing, 6 prints ready")
            ->check(CLI::Range(kFirstNotice, kLastNotice))
            ->type_name("");
    CLI::Option* text = notify->add_option("TEXT", request->text, "What the mail says")->type_name("");
    CLI::Option* attach =
        notify->add_option("--attach", request->attachment, "A file to go with it, where JOBATTACH is on")
            ->type_name("FILE");
    CLI::Option* test =
        notify->add_flag("--test", request->isTest, "Send the test message to every recipient instead");
    for (CLI::Option* option : {kind, text, attach}) test->excludes(option);
    commands.RunWith(notify, [request, text, &context = commands.m_context] {
        if (request->isTest || text->count() > 0) return SendNotice(context, *request);
        context.Complain("notify wants KIND and TEXT, or --test.");
        return kExitUsage;
    });
}

void DefineDownload(CommandSet& commands) {
    CLI::App* download = commands.Add(commands.m_program, "download", "Fetch a file by HTTP, HTTPS or FTP",
                                      {"qpr download https://example.org/price-list.pdf incoming",
                                       "qpr --json download ftp://files.example.org/labels.zpl ."});
    auto request = std::make_shared<FetchRequest>();
    download->add_option("URL", request->address, "Its address")->required()->type_name("");
    download->add_option("DIR", request->folder, "The folder that it goes to")->required()->type_name("");
    commands.RunWith(download, [request, &context = commands.m_context] { return Fetch(context, *request); });
}

}  // namespace

void DefineNotifyCommands(CommandSet& commands) {
    DefineNotify(commands);
    DefineDownload(commands);
}

}  // namespace quirepress
