#pragma once

#include <functional>
#include <map>
#include <qpdf/QPDFObjectHandle.hh>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "documents/pdf_color_space.h"
#include "documents/pdf_content_tokens.h"
#include "documents/pdf_page_color.h"

namespace quirepress {

// Reads content streams of one document and tells what they paint. It believes only what it understands:
// what it does not makes a verdict undecided, never mono. Everything is bounded: streams, depth, and the work
// by what `isTimeUp` says.
class PdfContentColor {
public:
    PdfContentColor(const GreyRule& rule, std::function<bool()> isTimeUp)
        : m_rule(rule), m_isTimeUp(std::move(isTimeUp)) {}

    // A page's content, or an appearance (a form).
    PageColor JudgePage(QPDFObjectHandle page);
    PageColor JudgeAppearance(const QPDFObjectHandle& form);

private:
    using Handle = QPDFObjectHandle;

    struct Paint {
        PdfColorSpace space;
        PageColor color = PageColor::kMono;
    };
    struct State {
        Paint fill;
        Paint stroke;
        Handle glyphs;  // the font, when its glyphs are content streams
        bool strokesText = false;
    };
    struct Operand {
        bool isNumber = false;
        double number = 0;
        std::string name;  // with its "/"; empty when it is none
    };
    // One content stream being read.
    struct Reading {
        ContentTokens tokens;
        Handle resources;
        State state;
        std::vector<State> saved = {};
        std::vector<Operand> operands = {};
        PageColor verdict = PageColor::kMono;
        int openBrackets = 0;
        int ignoreUnknown = 0;                             // BX and not EX
        std::map<std::string, PdfColorSpace> spaces = {};  // by the names in `resources`
        void Add(PageColor color) { verdict = Both(verdict, color); }
    };
    // What a form looks like depends on what it is painted with.
    using FormKey =
        std::tuple<QPDFObjGen, PageColor, PageColor, PdfColorSpace::Family, PdfColorSpace::Family, bool>;
    static FormKey KeyOf(const Handle& object, const State& state);

    PageColor Read(const std::string& content, const Handle& resources, const State& state);
    void TakeOperand(Reading& reading, const ContentToken& token);
    void Do(Reading& reading, std::string_view word);
    bool SetColor(Reading& reading, std::string_view word);
    void SetSpace(Reading& reading, Paint& paint);
    void SetDevice(Reading& reading, Paint& paint, const char* space);
    void SetComponents(Reading& reading, Paint& paint);
    bool PaintPath(Reading& reading, std::string_view word);
    bool ChangeState(Reading& reading, std::string_view word);
    void SetFont(Reading& reading, Handle font);
    void UseGraphicsState(Reading& reading);
    void PaintText(Reading& reading);
    void PaintObject(Reading& reading);
    void PaintInlineImage(Reading& reading);

    PageColor JudgeForm(Handle form, const Handle& outerResources, const State& state);
    PageColor JudgeImageObject(Handle image, const Handle& resources, const State& state);
    PageColor JudgePattern(Handle pattern, const Handle& resources, PageColor ownColor);
    PageColor JudgeShading(Handle shading, const Handle& resources);
    PageColor JudgeGlyphs(Handle font, const Handle& outerResources, const State& state);
    PdfColorSpace SpaceOf(const Handle& object, const Handle& resources);
    const PdfColorSpace& SpaceNamed(Reading& reading, const std::string& name);
    Handle Lookup(Reading& reading, const char* kind, const std::string& name);

    GreyRule m_rule;
    std::function<bool()> m_isTimeUp;
    int m_depth = 0;
    long long m_tokens = 0;
    bool m_isOver = false;        // the time was up
    std::set<QPDFObjGen> m_open;  // forms and fonts that are being read
    std::map<FormKey, PageColor> m_forms;
    std::map<QPDFObjGen, PageColor> m_images;
    std::map<QPDFObjGen, PdfColorSpace> m_spaces;
};

}  // namespace quirepress
