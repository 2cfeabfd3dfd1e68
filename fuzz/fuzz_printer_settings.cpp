// Any bytes are read as a printer settings file; what there is of a set-up is read in turn, changed, and must
// come back with the change and nothing else. The same bytes are the name of a paper item.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "backends/paper_items.h"
#include "backends/printer_settings_file.h"
#include "fakes/memory_file.h"
#include "platform/print_setup.h"

namespace {

using namespace quirepress;

void Expect(bool isTrue) {
    if (!isTrue) std::abort();
}

void CheckMode(const std::string& block) {
    PrintSetupFormat& format = PortableSetupFormat();
    std::string message;
    JobTicket ticket;
    const bool isRead = format.ReadTicket(block, ticket, message) == 0;
    Expect(isRead == message.empty());
    std::string changed = block;
    Expect((format.ChangeTicket(changed, ticket, message) == 0) == isRead);
    JobTicket again;
    if (!isRead) return Expect(changed == block);
    ticket.copies = ticket.copies % 1000 + 1;
    ticket.trayName = "Upper";
    Expect(format.ChangeTicket(changed, ticket, message) == 0);
    Expect(format.ReadTicket(changed, again, message) == 0 && again == ticket);
    Expect(block.empty() || changed.size() == block.size());
}

void CheckNames(const std::string& block) {
    DeviceNames names;
    std::string message;
    const bool isRead = PortableSetupFormat().ReadNames(block, names, message) == 0;
    Expect(isRead == message.empty());
    Expect(names.driver.size() <= block.size() && names.device.size() <= block.size());
}

void CheckItem(std::string_view name) {
    for (const PaperGroup group : {PaperGroup::kOrientation, PaperGroup::kPaper}) {
        const PaperItem* item = FindPaperItem(name, group);
        if (item == nullptr) continue;
        PaperState state;
        const bool isSet = item->apply(state, name);
        Expect(isSet || (state.ticket == JobTicket() && !state.savedOrientation));
        Expect(state.ticket.scale >= 0 && state.ticket.scale <= 1000);
        Expect(state.ticket.copies >= 0 && state.ticket.copies <= 1'000'000);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    MemoryFile file(bytes);
    PrsContent content;
    const PrsReading reading = ReadPrintSetup(file, content);
    Expect(content.mode.bytes.size() + content.names.bytes.size() <= size);
    if (HasPrintSetup(reading)) {
        CheckMode(content.mode.bytes);
        CheckNames(content.names.bytes);
    }
    CheckMode(bytes);
    CheckNames(bytes);
    CheckItem(bytes);
    return 0;
}
