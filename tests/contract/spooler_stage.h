#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/spooler.h"

namespace quirepress {

// A print system set up for the contract suite: it has printer "First", which is the default and takes
// every document, and lets the suite make others.
class SpoolerStage {
public:
    virtual ~SpoolerStage() = default;
    virtual Spooler& System() = 0;
    virtual PrinterAdministration& Administration() = 0;
    virtual std::string WriteDocument(std::string_view name, std::string_view bytes) = 0;
    // Everything that can go out goes out.
    virtual void Deliver() = 0;
};

struct SpoolerStageMaker {
    const char* name;
    std::unique_ptr<SpoolerStage> (*make)();
};

}  // namespace quirepress
