#pragma once

#include <memory>
#include <string_view>
#include <utility>

#include "fakes/fake_spooler.h"

namespace quirepress {

// A print system that keeps a job although one chunk of it was refused.
class ForgivingSpooler : public FakeSpooler {
public:
    static constexpr int kRefusal = 28;

    ForgivingSpooler(Files& files, int refusedChunk) : FakeSpooler(files), m_refusedChunk(refusedChunk) {}

    void RefuseChunk(int number) { m_refusedChunk = number; }  // from 1; 0: none

    std::unique_ptr<RawPrinter> OpenRawPrinter(std::string_view printer, int& systemError) override {
        return std::make_unique<Raw>(FakeSpooler::OpenRawPrinter(printer, systemError), m_refusedChunk);
    }

private:
    class Raw : public RawPrinter {
    public:
        Raw(std::unique_ptr<RawPrinter> raw, int refusedChunk)
            : m_raw(std::move(raw)), m_refusedChunk(refusedChunk) {}
        int StartDocument(const DocumentInfo& document) override { return m_raw->StartDocument(document); }
        int WriteChunk(const void* data, std::size_t size) override {
            return ++m_chunk == m_refusedChunk ? -1 : m_raw->WriteChunk(data, size);
        }
        int Finish() override { return m_raw->Finish(); }
        std::int64_t JobId() const override { return m_raw->JobId(); }
        int SystemError() const override { return kRefusal; }

    private:
        std::unique_ptr<RawPrinter> m_raw;
        int m_refusedChunk;
        int m_chunk = 0;
    };

    int m_refusedChunk;
};

}  // namespace quirepress
