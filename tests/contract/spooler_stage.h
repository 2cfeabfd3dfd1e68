#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/temporary_folder.h"
#include "platform/services.h"
#include "platform/spooler.h"

namespace quirepress {

// A print system set up for the contract suite: it has printer "First", which is the default and takes
// every document, and lets the suite make others, which render documents.
class SpoolerStage {
public:
    virtual ~SpoolerStage() = default;
    virtual Spooler& System() = 0;
    virtual void MakePrinter(const std::string& name) = 0;
    virtual void RemovePrinter(const std::string& name) = 0;
    virtual void PausePrinter(const std::string& name) = 0;
    virtual void ResumePrinter(const std::string& name) = 0;
    std::string WriteDocument(std::string_view name, std::string_view bytes) const {
        return m_folder.Write(name, bytes);
    }
    // Everything that can go out goes out.
    virtual void Deliver() = 0;

    // Where print systems differ.
    virtual bool ShowsOpenDocuments() const { return true; }  // a job from its start, not from its end
    virtual bool KeepsEmptyDocuments() const { return true; }
    virtual std::int64_t SizeUnit() const { return 1; }  // in which sizes of jobs are told
    virtual std::string ShownName(const std::string& document) const { return document; }

protected:
    Services m_services = MakeSystemServices();
    TemporaryFolder m_folder;
};

// One whose printers are the product's own. Its operations are those of the stage.
class OwnPrintersStage : public SpoolerStage {
public:
    virtual PrinterAdministration& Administration() = 0;
    void MakePrinter(const std::string& name) override {
        EXPECT_EQ(Administration().CreatePrinterQueue(name, "null:", m_message), 0) << m_message;
    }
    void RemovePrinter(const std::string& name) override {
        EXPECT_EQ(Administration().RemovePrinterQueue(name, m_message), 0) << m_message;
    }
    void PausePrinter(const std::string& name) override {
        EXPECT_EQ(Administration().PausePrinterQueue(name, m_message), 0) << m_message;
    }
    void ResumePrinter(const std::string& name) override {
        EXPECT_EQ(Administration().ResumePrinterQueue(name, m_message), 0) << m_message;
    }

private:
    std::string m_message;
};

struct SpoolerStageMaker {
    const char* name;
    std::unique_ptr<SpoolerStage> (*make)();
};

// The print systems of the system that the tests run on.
std::vector<SpoolerStageMaker> SystemSpoolerStages();

}  // namespace quirepress
