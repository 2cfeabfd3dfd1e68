#include "settings/settings_catalog.h"

#include <array>

#include "platform/prompts.h"
#include "settings/balance_options.h"
#include "settings/color_printer_options.h"
#include "settings/email_options.h"
#include "settings/general_settings.h"
#include "settings/keyword_file.h"
#include "settings/log_options.h"
#include "settings/misc_options.h"
#include "settings/print_to_file_options.h"
#include "settings/separator_options.h"

namespace quirepress {

namespace {

template <typename Options>
struct CatalogFile {
    using OptionsType = Options;
    const KeywordTable<Options>& (*keywords)();
    void (*applyCouplings)(Options&) = nullptr;  // what the options dialog does before it saves
    bool (*isCoupled)(std::string_view key) = nullptr;
    const char* saveNote = "";  // what a save does besides
};

template <typename Options>
class KeywordDocument : public SettingsDocument {
public:
    KeywordDocument(const CatalogFile<Options>& file, const SettingsPlace& place)
        : m_file(file), m_place(place), m_loadResult(LoadSettings(file.keywords(), place, m_options)) {}

    std::string FileName() const override { return File().name; }
    int LoadResult() const override { return m_loadResult; }
    std::string SaveNote() const override { return m_file.saveNote; }

    int Save() override {
        const std::string path = m_place.workingFolder + File().name;
        if (m_loadResult == kSettingsDone || m_place.files.Inspect(path).kind == FileKind::kMissing)
            return SaveSettings(m_file.keywords(), m_place, m_options);
        m_place.prompts.ShowBox("Save Error!", FileName() + " can't be read, so it is left as it is.");
        return kSettingsNotWritten;
    }

protected:
    const std::vector<KeywordRow>& Rows() const override { return m_file.keywords().Rows(); }
    void* Object() override { return &m_options; }
    const void* Object() const override { return &m_options; }
    const void* Defaults() const override { return &m_defaults; }

    bool ReadBack(const KeywordRow& row, SettingValue& value, std::string& flaw) const override {
        std::string bytes;
        const std::string old = ReadSettingsText(File(), m_place);
        if (!WriteKeywords(Rows(), File(), m_place.codePage, old, &m_options, bytes, flaw)) return false;
        Options fresh{};
        KeywordReading reading;
        ReadKeywords(Rows(), File(), m_place.codePage, bytes, &fresh, reading);
        value = ReadSettingValue(row, &fresh);
        return true;
    }

    std::vector<std::string> DescribeCouplings(std::string_view key) const override {
        std::vector<std::string> notes;
        if (m_file.isCoupled == nullptr || !m_file.isCoupled(key)) return notes;
        Options coupled = m_options;
        m_file.applyCouplings(coupled);
        for (const KeywordRow& row : Rows()) {
            const SettingValue value = ReadSettingValue(row, &coupled);
            if (value != ReadSettingValue(row, &m_options))
                notes.push_back("The options dialog would also set " + std::string(row.key) + " to " +
                                DescribeSettingValue(value) + "; it stays as it is here.");
        }
        return notes;
    }

private:
    const SettingsFile& File() const { return m_file.keywords().File(); }

    const CatalogFile<Options>& m_file;
    SettingsPlace m_place;
    Options m_options;
    const Options m_defaults{};
    int m_loadResult;
};

constexpr CatalogFile<GeneralOptions> kGeneral = {GeneralKeywords, ApplyDialogCouplings, IsCoupledKey};
constexpr CatalogFile<MiscOptions> kMisc = {MiscKeywords};
constexpr CatalogFile<LogOptions> kLog = {LogKeywords};
constexpr CatalogFile<LogCheckOptions> kLogCheck = {
    LogCheckKeywords, nullptr, nullptr,
    "The file holds the time of the last removal of records of missing files too (NOLONGER in "
    "log_setup.ini), as its first line. Saving these keys drops that time: such removals are due again only "
    "after printlogcheck.ini was erased and EVERY has gone by. Noting the time drops these keys."};
constexpr CatalogFile<EmailOptions> kEmail = {EmailKeywords};
constexpr CatalogFile<SeparatorOptions> kSeparator = {SeparatorKeywords, ApplySeparatorDialogCouplings,
                                                      IsCoupledSeparatorKey};
constexpr CatalogFile<BalanceOptions> kBalance = {BalanceKeywords};
constexpr CatalogFile<ColorPrinterOptions> kColorPrinters = {ColorPrinterKeywords};
constexpr CatalogFile<PrintToFileOptions> kPrintToFile = {PrintToFileKeywords};
constexpr CatalogFile<PrintToPdfOptions> kPrintToPdf = {PrintToPdfKeywords};
constexpr CatalogFile<PrintToXpsOptions> kPrintToXps = {PrintToXpsKeywords};

struct CatalogEntry {
    const char* name;
    std::unique_ptr<SettingsDocument> (*open)(const SettingsPlace& place);
    std::string (*renderTable)();
    const SettingsFile& (*file)();
    const char* saveNote;
};

template <const auto& kFile>
constexpr CatalogEntry EntryOf(const char* name) {
    using Options = typename std::decay_t<decltype(kFile)>::OptionsType;
    return {name,
            [](const SettingsPlace& place) -> std::unique_ptr<SettingsDocument> {
                return std::make_unique<KeywordDocument<Options>>(kFile, place);
            },
            [] {
                const Options defaults{};
                return RenderSettingsTable(kFile.keywords().Rows(), &defaults);
            },
            []() -> const SettingsFile& { return kFile.keywords().File(); }, kFile.saveNote};
}

// Every settings file of the program; a new one is a line here.
constexpr std::array kCatalog = {EntryOf<kGeneral>("general"),
                                 EntryOf<kMisc>("misc"),
                                 EntryOf<kLog>("log"),
                                 EntryOf<kLogCheck>("logcheck"),
                                 EntryOf<kEmail>("email"),
                                 EntryOf<kSeparator>("separator"),
                                 EntryOf<kBalance>("balance"),
                                 EntryOf<kColorPrinters>("colorprinters"),
                                 EntryOf<kPrintToFile>("printfile"),
                                 EntryOf<kPrintToPdf>("printpdf"),
                                 EntryOf<kPrintToXps>("printxps")};

}  // namespace

std::vector<std::pair<std::string, SettingValue>> SettingsDocument::Values() const {
    std::vector<std::pair<std::string, SettingValue>> values;
    for (const KeywordRow& row : Rows()) values.emplace_back(row.key, ReadSettingValue(row, Object()));
    return values;
}

const KeywordRow* SettingsDocument::FindRow(std::string_view key, std::string& message) const {
    for (const KeywordRow& row : Rows())
        if (key == row.key) return &row;
    message = FileName() + " has no key \"" + std::string(key) + "\".";
    return nullptr;
}

int SettingsDocument::ChangeKey(std::string_view key, const std::vector<std::string>& values,
                                std::string& message, std::vector<std::string>& notes) {
    const KeywordRow* const row = FindRow(key, message);
    if (row == nullptr) return 1;
    SettingValue now;
    if (!ParseSettingValue(*row, values, now, message)) return 1;
    const SettingValue before = ReadSettingValue(*row, Object());
    WriteSettingValue(*row, now, Object());
    SettingValue kept;
    if (!ReadBack(*row, kept, message)) {
        WriteSettingValue(*row, before, Object());
        return 1;
    }
    if (kept != now)
        notes.push_back(std::string(row->key) + " will not stay " + DescribeSettingValue(now) +
                        ": the next start reads " + DescribeSettingValue(kept) + ".");
    for (std::string& note : DescribeCouplings(key)) notes.push_back(std::move(note));
    return 0;
}

int SettingsDocument::ClearKey(std::string_view key, std::string& message) {
    const KeywordRow* const row = FindRow(key, message);
    if (row == nullptr) return 1;
    CopyField(*row, Defaults(), Object());
    return 0;
}

std::vector<std::string> SettingsNames() {
    std::vector<std::string> names;
    names.reserve(kCatalog.size());
    for (const CatalogEntry& entry : kCatalog) names.emplace_back(entry.name);
    return names;
}

std::unique_ptr<SettingsDocument> OpenSettings(std::string_view name, const SettingsPlace& place) {
    for (const CatalogEntry& entry : kCatalog)
        if (name == entry.name) return entry.open(place);
    return nullptr;
}

std::string RenderSettingsReference() {
    std::string page =
        "# Settings\n\n"
        "The settings are small text files in the working folder. A line `KEY` is a flag; a line `KEY;value` "
        "gives a "
        "value, which holds no `;` and no line end. A line has at most 254 bytes; a longer one ends the "
        "reading of "
        "its file. The order of the lines does not matter, the later of two lines with the same key counts, "
        "and "
        "lines that nobody knows are passed over and gone after the next save. A negative flag stands in its "
        "file "
        "when the option that it names is off; its default below is the option's.\n\n"
        "Texts are UTF-8. A file that is not valid UTF-8 is read in the system's single-byte code page "
        "(Windows-1252 where there is none) and stays in it while its texts fit.\n\n"
        "`qpr settings show NAME` shows a file, `qpr settings set NAME KEY [VALUE...]` and `qpr settings "
        "unset NAME "
        "KEY` change one key. This page is made from the program's own tables: `qpr reference settings`.\n";
    for (const CatalogEntry& entry : kCatalog) {
        page += std::string("\n## ") + entry.name + ": `" + entry.file().name + "`\n\n";
        if (*entry.saveNote != '\0') page += std::string(entry.saveNote) + "\n\n";
        page += entry.renderTable();
    }
    return page;
}

}  // namespace quirepress
