#include "transport/curl_mail_sender.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "base/path.h"
#include "base/text.h"
#include "platform/clock.h"
#include "platform/file_tools.h"
#include "transport/mail_text.h"
#include "transport/media_types.h"

namespace quirepress {

namespace {

// In base64 a third more, which the usual limit of mail servers, 25 MB, just takes.
constexpr std::int64_t kLargestAttachments = std::int64_t{18} << 20;  // bytes, together
constexpr int kSubmissionPort = 587;  // its servers begin in plain text and then switch
constexpr TransferLimits kLeaveLimits = {2'000, 2, 2'000};

struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using TextList = std::unique_ptr<curl_slist, FreeList>;

struct FreeMime {
    void operator()(curl_mime* mime) const { curl_mime_free(mime); }
};
using Mime = std::unique_ptr<curl_mime, FreeMime>;

// Null when memory is short.
TextList MakeList(std::initializer_list<std::string> texts) {
    TextList list;
    for (const std::string& text : texts) {
        curl_slist* const longer = curl_slist_append(list.get(), text.c_str());
        if (longer == nullptr) return nullptr;
        static_cast<void>(list.release());
        list.reset(longer);
    }
    return list;
}

// Letters, digits and what else stands in host names; bytes of other scripts.
bool IsHostName(std::string_view host) {
    const auto isAllowed = [](char c) {
        const bool isWord = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        return isWord || c == '.' || c == '-' || c == '_' || static_cast<unsigned char>(c) >= 0x80;
    };
    return !host.empty() && std::all_of(host.begin(), host.end(), isAllowed);
}

struct ReadAttachment {
    std::string name;
    std::string bytes;
};

class CurlMailManager : public MailManager {
public:
    explicit CurlMailManager(const MailPlace& place)
        : m_place(place), m_transfer(place.transfer), m_interruptsBefore(place.countInterrupts()) {}
    ~CurlMailManager() override { LeaveServer(); }
    CurlMailManager(const CurlMailManager&) = delete;
    CurlMailManager& operator=(const CurlMailManager&) = delete;

    void SetSmtpHost(std::string_view host) override { m_host = host; }
    void SetSsl(bool isOn) override { m_isSsl = isOn; }
    void SetSmtpPort(int port) override { m_port = port; }
    void SetLogin(std::string_view userName, std::string_view password) override {
        m_userName = userName;
        m_password = password;
    }
    bool Send(const MailMessage& message) override;
    std::string FailureText() const override { return m_failure; }
    bool WasStopped() const override { return m_wasStopped; }

private:
    void* BeginExchange(const TransferLimits& limits);
    bool Fail(std::string text);
    std::vector<ReadAttachment> ReadAttachments(const MailMessage& message, std::string& body);
    Mime BuildMime(void* exchange, const MailMessage& message);
    std::string MakeMessageId();
    bool KeepsGoing() { return m_place.countInterrupts() == m_interruptsBefore; }
    void LeaveServer();

    MailPlace m_place;
    Transfer m_transfer;
    int m_interruptsBefore;
    std::string m_host;
    bool m_isSsl = false;
    int m_port = 0;
    std::string m_userName;
    std::string m_password;
    bool m_isConnected = false;
    bool m_wasStopped = false;
    int m_sent = 0;
    std::string m_failure;
};

bool CurlMailManager::Fail(std::string text) {
    m_failure = std::move(text);
    return false;
}

void* CurlMailManager::BeginExchange(const TransferLimits& limits) {
    CURL* const exchange = m_transfer.BeginExchange(limits);
    if (exchange == nullptr) return nullptr;
    const bool isEncryptedAtOnce = m_isSsl && m_port != kSubmissionPort;
    std::string address = (isEncryptedAtOnce ? "smtps://" : "smtp://") + m_host;
    if (m_port != 0) address += ":" + std::to_string(m_port);
    curl_easy_setopt(exchange, CURLOPT_URL, address.c_str());
    curl_easy_setopt(exchange, CURLOPT_PROTOCOLS_STR, "smtp,smtps");
    curl_easy_setopt(exchange, CURLOPT_USE_SSL, static_cast<long>(m_isSsl ? CURLUSESSL_ALL : CURLUSESSL_TRY));
    if (!m_userName.empty()) {
        curl_easy_setopt(exchange, CURLOPT_USERNAME, m_userName.c_str());
        curl_easy_setopt(exchange, CURLOPT_PASSWORD, m_password.c_str());
    }
    return exchange;
}

bool CurlMailManager::Send(const MailMessage& message) {
    constexpr const char* kNoMemory = "there is not enough memory";
    m_wasStopped = false;
    Mailbox sender;
    Mailbox recipient;
    if (!IsHostName(m_host)) return Fail("\"" + m_host + "\" is no name of a mail server");
    if (m_port < 0 || m_port > 65535) return Fail(std::to_string(m_port) + " is no port of a mail server");
    if (!ParseMailbox(message.sender, sender)) return Fail("\"" + message.sender + "\" is no sender address");
    if (!ParseMailbox(message.recipient, recipient))
        return Fail("\"" + message.recipient + "\" is no mail address");

    CURL* const exchange = BeginExchange(m_place.limits);
    if (exchange == nullptr) return Fail(kNoMemory);
    const Mime mime = BuildMime(exchange, message);
    const TextList recipients = MakeList({"<" + recipient.address + ">"});
    const TextList fields = MakeList({"From: " + FormatMailbox(sender), "To: " + FormatMailbox(recipient),
                                      "Subject: " + EncodeHeaderText(message.subject),
                                      "Date: " + FormatMailDate(m_place.clock.Now()),
                                      "Message-ID: " + MakeMessageId(), "Auto-Submitted: auto-generated"});
    if (!mime || !recipients || !fields) return Fail(kNoMemory);
    curl_easy_setopt(exchange, CURLOPT_MAIL_FROM, ("<" + sender.address + ">").c_str());
    curl_easy_setopt(exchange, CURLOPT_MAIL_RCPT, recipients.get());
    curl_easy_setopt(exchange, CURLOPT_HTTPHEADER, fields.get());
    curl_easy_setopt(exchange, CURLOPT_MIMEPOST, mime.get());

    const TransferEnd end = m_transfer.RunExchange([this] { return KeepsGoing(); });
    curl_easy_setopt(exchange, CURLOPT_MIMEPOST, nullptr);
    m_isConnected = end == TransferEnd::kDone;
    m_wasStopped = end == TransferEnd::kStopped;
    if (m_wasStopped) return Fail("it was stopped");
    return m_isConnected || Fail(m_transfer.FailureText());
}

std::vector<ReadAttachment> CurlMailManager::ReadAttachments(const MailMessage& message, std::string& body) {
    std::vector<ReadAttachment> attachments;
    std::int64_t room = kLargestAttachments;
    for (const std::string& path : message.attachments) {
        ReadAttachment attachment{std::string(FileTitle(path)), {}};
        const std::string name = ToPrintableLine(path);
        FileResult result = FileResult::kFailed;
        if (m_place.files.Inspect(path).size > room) {
            body += "\r\n(" + name + " is too large to be attached.)\r\n";
        } else if (!ReadWholeFile(m_place.files, path, room, attachment.bytes, result)) {
            body += "\r\n(" + name + " can't be attached: " + DescribeFileResult(result) + ".)\r\n";
        } else {
            room -= static_cast<std::int64_t>(attachment.bytes.size());
            attachments.push_back(std::move(attachment));
        }
    }
    return attachments;
}

Mime CurlMailManager::BuildMime(void* exchange, const MailMessage& message) {
    Mime mime(curl_mime_init(exchange));
    curl_mimepart* const text = mime ? curl_mime_addpart(mime.get()) : nullptr;
    if (text == nullptr) return nullptr;
    std::string body = message.body;
    const std::vector<ReadAttachment> attachments = ReadAttachments(message, body);
    body = ToMailLines(body);
    bool isWhole = curl_mime_data(text, body.data(), body.size()) == CURLE_OK &&
                   curl_mime_type(text, "text/plain; charset=utf-8") == CURLE_OK &&
                   curl_mime_encoder(text, "quoted-printable") == CURLE_OK;
    for (const ReadAttachment& attachment : attachments) {
        curl_mimepart* const part = curl_mime_addpart(mime.get());
        TextList fields = MakeList({FormatAttachmentField(attachment.name)});
        const std::string type(MediaTypeOf(attachment.name));
        isWhole = isWhole && part != nullptr && fields &&
                  curl_mime_data(part, attachment.bytes.data(), attachment.bytes.size()) == CURLE_OK &&
                  curl_mime_type(part, type.c_str()) == CURLE_OK &&
                  curl_mime_encoder(part, "base64") == CURLE_OK &&
                  curl_mime_headers(part, fields.get(), 1) == CURLE_OK;
        if (isWhole) static_cast<void>(fields.release());  // the part owns them now
    }
    return isWhole ? std::move(mime) : nullptr;
}

std::string CurlMailManager::MakeMessageId() {
    const std::string host = IsHostName(m_place.hostName) ? m_place.hostName : "localhost";
    return "<" + std::to_string(m_place.clock.Now()) + "." + std::to_string(++m_sent) + "@" + host + ">";
}

// The library would take leave with a wait of its own, and one without our limits, if the connection were
// left to it: it is closed after one more exchange, whose limits then hold.
void CurlMailManager::LeaveServer() {
    CURL* const exchange = m_isConnected ? BeginExchange(kLeaveLimits) : nullptr;
    if (exchange == nullptr) return;
    curl_easy_setopt(exchange, CURLOPT_CUSTOMREQUEST, "NOOP");
    curl_easy_setopt(exchange, CURLOPT_NOBODY, 1L);
    curl_easy_setopt(exchange, CURLOPT_FORBID_REUSE, 1L);
    m_transfer.RunExchange({});
}

}  // namespace

std::unique_ptr<MailManager> CurlMailSender::CreateManager() {
    return std::make_unique<CurlMailManager>(m_place);
}

}  // namespace quirepress
