#include "settings/email_options.h"

#include "settings/keyword_file.h"

namespace quirepress {

const KeywordTable<EmailOptions>& EmailKeywords() {
    // It holds a password.
    static const KeywordTable<EmailOptions> table(
        {"email_setup.ini", "Can't save to general_setup.ini file.", FileAccess::kOwnerOnly},
        {
            Flag("JOBSCHED", &EmailOptions::m_scheduledJob,
                 "Send \"Scheduled Job Finished\" when a scheduled job has finished."),
            Flag("PRINTERROR", &EmailOptions::m_printerAlert,
                 "Send \"Printer Alert\" when a printer wants attention."),
            Flag("ERROR", &EmailOptions::m_printError, "Send \"Print Error\" when a print has failed."),
            Flag("JOB", &EmailOptions::m_printsFinished,
                 "Send \"Prints Finished\" at the end of a print run."),
            Flag("PRINTSREADY", &EmailOptions::m_printsReady, "Send \"Prints Ready\"."),
            Flag("JOBATTACH", &EmailOptions::m_attach,
                 "Attach the file that a notification is about, when there is one."),
            Flag("JOBATTACHTYPE", &EmailOptions::m_attachType, "Kept for the settings dialog."),
            Texts("EMAILTO", &EmailOptions::m_recipients, "A recipient; one line for each."),
            Text("EMAILFROM", &EmailOptions::m_sender, "Address of the sender."),
            Text("SMTP", &EmailOptions::m_server,
                 "The mail server: `HOST` or `HOST:PORT`; `ssl:` in front asks for TLS from the first byte."),
            Text("EMAILUSERNAME", &EmailOptions::m_userName, "User name at the mail server; none: no login."),
            Text("EMAILPASSWORD", &EmailOptions::m_password,
                 "Password there, in plain text: the file is readable for its owner only."),
        });
    return table;
}

int LoadEmailOptions(EmailOptions& options, const SettingsPlace& place) {
    return LoadSettings(EmailKeywords(), place, options);
}

int SaveEmailOptions(const EmailOptions& options, const SettingsPlace& place) {
    return SaveSettings(EmailKeywords(), place, options);
}

}  // namespace quirepress
