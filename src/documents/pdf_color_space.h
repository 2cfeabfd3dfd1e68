#pragma once

#include <memory>
#include <qpdf/QPDFObjectHandle.hh>
#include <string>
#include <vector>

#include "documents/pdf_page_color.h"

namespace quirepress {

// A colour space of a PDF file, as far as it is needed to tell grey from colours.
class PdfColorSpace {
public:
    enum class Family {
        kGray,
        kRgb,
        kCmyk,
        kLab,
        kIndexed,
        kMonoInk,
        kProcessInks,
        kTint,
        kPattern,
        kUnknown
    };

    PdfColorSpace() : PdfColorSpace(Family::kGray, 1) {}
    static PdfColorSpace Unknown() { return {Family::kUnknown, 0}; }

    // A name or an array; names are looked up in `resources` where they are not the system's own.
    static PdfColorSpace Read(const QPDFObjectHandle& object, const QPDFObjectHandle& resources,
                              const GreyRule& rule);

    Family Kind() const { return m_family; }
    int Components() const { return m_components; }
    bool IsDevice() const {
        return m_family == Family::kGray || m_family == Family::kRgb || m_family == Family::kCmyk;
    }
    bool IsMono() const { return JudgeAll() == PageColor::kMono; }
    // A colour in it; as many values as it has components.
    PageColor Judge(const std::vector<double>& values, const GreyRule& rule) const;
    // Whatever colour of it is used.
    PageColor JudgeAll() const;
    // The colour that holds when the space is chosen.
    PageColor JudgeInitial(const GreyRule& rule) const;
    // kIndexed: the colours of the palette.
    const std::vector<PageColor>& Palette() const { return m_palette; }
    // kPattern: of the colours for patterns that have none of their own; may be null.
    const PdfColorSpace* Base() const { return m_base.get(); }

private:
    using Handle = QPDFObjectHandle;

    PdfColorSpace(Family family, int components) : m_family(family), m_components(components) {}
    static PdfColorSpace ReadAt(Handle object, const Handle& resources, const GreyRule& rule, int depth);
    static PdfColorSpace ReadNamed(const std::string& name, Handle resources, const GreyRule& rule,
                                   int depth);
    static PdfColorSpace ReadArray(Handle array, const Handle& resources, const GreyRule& rule, int depth);
    static PdfColorSpace ReadProfile(Handle stream);
    static PdfColorSpace ReadIndexed(Handle array, const Handle& resources, const GreyRule& rule, int depth);
    static PdfColorSpace ReadInks(Handle array, const Handle& resources, const GreyRule& rule, int depth);

    Family m_family;
    int m_components;
    std::shared_ptr<const PdfColorSpace> m_base;
    std::vector<PageColor> m_palette;
    std::vector<std::string> m_inks;   // kProcessInks
    std::vector<double> m_from, m_to;  // kTint: colours of the base for no ink and for all of it
    double m_exponent = 1;
};

// The colours that a function of one input runs through in `space`: kMono only when all of them are.
PageColor JudgeFunction(const QPDFObjectHandle& function, const PdfColorSpace& space, const GreyRule& rule);

}  // namespace quirepress
