#include "documents/pdf_content_color.h"

#include <algorithm>
#include <qpdf/QPDFObjectHandle.hh>

#include "documents/pdf_image_color.h"
#include "documents/qpdf_file.h"

namespace quirepress {
namespace {

using Handle = QPDFObjectHandle;
using Family = PdfColorSpace::Family;
using Kind = ContentTokenKind;

constexpr std::size_t kLongestContent = std::size_t{64} << 20;
constexpr std::size_t kMostOperands = 64;
constexpr std::size_t kMostSaved = 1'000;
constexpr int kDeepest = 12;
constexpr int kLookAtTime = 1'000;  // tokens
constexpr int kMostContents = 10'000;

// Operators that neither paint nor change what is painted with.
constexpr std::string_view kHarmless[] = {"w",  "J",  "j",  "M",  "d",  "ri", "i",   "cm",  "m",
                                          "l",  "c",  "v",  "y",  "h",  "re", "W",   "W*",  "n",
                                          "BT", "ET", "Tc", "Tw", "Tz", "TL", "Ts",  "Td",  "TD",
                                          "Tm", "T*", "d0", "d1", "MP", "DP", "BMC", "BDC", "EMC"};

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsHarmless(std::string_view word) {
    return std::find(std::begin(kHarmless), std::end(kHarmless), word) != std::end(kHarmless);
}

// The streams of a page one behind the other, as if they were one.
bool ReadContents(Handle contents, std::string& bytes) {
    std::vector<Handle> streams;
    if (contents.isStream()) streams.push_back(contents);
    if (contents.isArray() && contents.getArrayNItems() > kMostContents) return false;
    if (contents.isArray()) streams = contents.getArrayAsVector();
    for (Handle& stream : streams) {
        std::string part;
        if (stream.isNull()) continue;
        if (!stream.isStream() ||
            !ReadStream(stream, qpdf_dl_specialized, kLongestContent - bytes.size(), part))
            return false;
        bytes += part;
        if (bytes.size() >= kLongestContent) return false;
        bytes += '\n';
    }
    return true;
}

// A value that pages inherit from the nodes above them.
Handle Inherited(Handle page, const char* key) {
    for (int depth = 0; depth < kDeepest * kDeepest && page.isDictionary(); ++depth) {
        Handle value = page.getKey(key);
        if (!value.isNull()) return value;
        page = page.getKey("/Parent");
    }
    return Handle::newNull();
}

bool IsTrue(Handle value) {
    return value.isBool() && value.getBoolValue();
}

}  // namespace

PageColor PdfContentColor::JudgePage(Handle page) {
    std::string content;
    if (!ReadContents(page.getKey("/Contents"), content)) return PageColor::kUndecided;
    return Read(content, Inherited(page, "/Resources"), {});
}

PageColor PdfContentColor::JudgeAppearance(const Handle& form) {
    return JudgeForm(form, Handle::newNull(), {});
}

PageColor PdfContentColor::Read(const std::string& content, const Handle& resources, const State& state) {
    if (m_depth >= kDeepest || m_isOver) return PageColor::kUndecided;
    ++m_depth;
    Reading reading{ContentTokens(content), resources, state};
    for (ContentToken token = reading.tokens.Take();
         token.kind != Kind::kEnd && reading.verdict != PageColor::kColor; token = reading.tokens.Take()) {
        if (token.kind == Kind::kBad) reading.Add(PageColor::kUndecided);
        if (token.kind == Kind::kWord && reading.openBrackets == 0 &&
            !IsOneOf(token.text, {"true", "false", "null"})) {
            Do(reading, token.text);
            reading.operands.clear();
        } else {
            TakeOperand(reading, token);
        }
        if (++m_tokens % kLookAtTime == 0 && m_isTimeUp()) m_isOver = true;
        if (!m_isOver) continue;
        reading.Add(PageColor::kUndecided);
        break;
    }
    if (reading.openBrackets != 0) reading.Add(PageColor::kUndecided);
    --m_depth;
    return reading.verdict;
}

// An array or a dictionary is one operand, of which nothing is needed.
void PdfContentColor::TakeOperand(Reading& reading, const ContentToken& token) {
    if (token.kind == Kind::kClose && --reading.openBrackets < 0) {
        reading.openBrackets = 0;
        reading.Add(PageColor::kUndecided);
    }
    if (reading.openBrackets == 0 && reading.operands.size() < kMostOperands) {
        Operand operand;
        operand.isNumber = token.kind == Kind::kNumber;
        operand.number = token.number;
        if (token.kind == Kind::kName) operand.name = FullContentName(token.text);
        if (token.kind != Kind::kOpen) reading.operands.push_back(std::move(operand));
    } else if (reading.openBrackets == 0) {
        reading.Add(PageColor::kUndecided);
    }
    if (token.kind == Kind::kOpen) ++reading.openBrackets;
}

void PdfContentColor::Do(Reading& reading, std::string_view word) {
    if (IsHarmless(word) || SetColor(reading, word) || PaintPath(reading, word) || ChangeState(reading, word))
        return;
    if (IsOneOf(word, {"Tj", "TJ", "'", "\""})) return PaintText(reading);
    if (word == "Do") return PaintObject(reading);
    if (word == "BI") return PaintInlineImage(reading);
    if (word == "sh") {
        const std::string name = reading.operands.empty() ? std::string() : reading.operands.back().name;
        return reading.Add(JudgeShading(Lookup(reading, "/Shading", name), reading.resources));
    }
    if (reading.ignoreUnknown == 0) reading.Add(PageColor::kUndecided);
}

bool PdfContentColor::SetColor(Reading& reading, std::string_view word) {
    Paint& fill = reading.state.fill;
    Paint& stroke = reading.state.stroke;
    if (word == "g") return SetDevice(reading, fill, "/DeviceGray"), true;
    if (word == "G") return SetDevice(reading, stroke, "/DeviceGray"), true;
    if (word == "rg") return SetDevice(reading, fill, "/DeviceRGB"), true;
    if (word == "RG") return SetDevice(reading, stroke, "/DeviceRGB"), true;
    if (word == "k") return SetDevice(reading, fill, "/DeviceCMYK"), true;
    if (word == "K") return SetDevice(reading, stroke, "/DeviceCMYK"), true;
    if (word == "cs") return SetSpace(reading, fill), true;
    if (word == "CS") return SetSpace(reading, stroke), true;
    if (word == "sc" || word == "scn") return SetComponents(reading, fill), true;
    if (word == "SC" || word == "SCN") return SetComponents(reading, stroke), true;
    return false;
}

void PdfContentColor::SetDevice(Reading& reading, Paint& paint, const char* space) {
    paint.space = SpaceNamed(reading, space);
    SetComponents(reading, paint);
}

void PdfContentColor::SetSpace(Reading& reading, Paint& paint) {
    const std::string name = reading.operands.empty() ? std::string() : reading.operands.back().name;
    if (name.empty()) return reading.Add(PageColor::kUndecided);
    paint.space = SpaceNamed(reading, name);
    paint.color = paint.space.JudgeInitial(m_rule);
}

void PdfContentColor::SetComponents(Reading& reading, Paint& paint) {
    std::vector<double> values;
    for (const Operand& operand : reading.operands)
        if (operand.isNumber) values.push_back(operand.number);
    const std::string name = reading.operands.empty() ? std::string() : reading.operands.back().name;
    paint.color = PageColor::kUndecided;
    if (values.size() + (name.empty() ? 0 : 1) != reading.operands.size()) return;
    if (name.empty()) {
        paint.color = paint.space.Judge(values, m_rule);
    } else if (paint.space.Kind() == Family::kPattern) {
        const PdfColorSpace* base = paint.space.Base();
        const PageColor own = base == nullptr ? PageColor::kUndecided : base->Judge(values, m_rule);
        paint.color = JudgePattern(Lookup(reading, "/Pattern", name), reading.resources, own);
    }
}

bool PdfContentColor::PaintPath(Reading& reading, std::string_view word) {
    const bool both = IsOneOf(word, {"B", "B*", "b", "b*"});
    const bool fills = both || IsOneOf(word, {"f", "F", "f*"});
    const bool strokes = both || IsOneOf(word, {"S", "s"});
    if (fills) reading.Add(reading.state.fill.color);
    if (strokes) reading.Add(reading.state.stroke.color);
    return fills || strokes;
}

bool PdfContentColor::ChangeState(Reading& reading, std::string_view word) {
    if (word == "q") {
        if (reading.saved.size() < kMostSaved)
            reading.saved.push_back(reading.state);
        else
            reading.Add(PageColor::kUndecided);
    } else if (word == "Q") {
        if (reading.saved.empty()) return true;  // as viewers do
        reading.state = reading.saved.back();
        reading.saved.pop_back();
    } else if (word == "Tr") {
        const bool isPlain = reading.operands.size() == 1 && reading.operands[0].isNumber &&
                             (reading.operands[0].number == 0 || reading.operands[0].number == 3);
        reading.state.strokesText = !isPlain;
    } else if (word == "Tf") {
        const std::string name = reading.operands.empty() ? std::string() : reading.operands[0].name;
        SetFont(reading, Lookup(reading, "/Font", name));
    } else if (word == "gs") {
        UseGraphicsState(reading);
    } else if (word == "BX" || word == "EX") {
        reading.ignoreUnknown = std::max(0, reading.ignoreUnknown + (word == "BX" ? 1 : -1));
    } else {
        return false;
    }
    return true;
}

void PdfContentColor::SetFont(Reading& reading, Handle font) {
    const bool hasGlyphs = font.isDictionary() && font.getKey("/Subtype").isNameAndEquals("/Type3");
    reading.state.glyphs = hasGlyphs ? font : Handle();
}

// Of what a graphics state can change, only transfer functions make colours of grey.
void PdfContentColor::UseGraphicsState(Reading& reading) {
    const std::string name = reading.operands.empty() ? std::string() : reading.operands.back().name;
    Handle state = Lookup(reading, "/ExtGState", name);
    if (!state.isDictionary()) return;
    if (state.getKey("/TR").isArray() || state.getKey("/TR2").isArray()) reading.Add(PageColor::kUndecided);
    Handle font = state.getKey("/Font");
    if (font.isArray() && font.getArrayNItems() > 0) SetFont(reading, font.getArrayItem(0));
}

void PdfContentColor::PaintText(Reading& reading) {
    const State& state = reading.state;
    reading.Add(state.fill.color);
    if (state.strokesText) reading.Add(state.stroke.color);
    if (state.glyphs.isInitialized()) reading.Add(JudgeGlyphs(state.glyphs, reading.resources, state));
}

void PdfContentColor::PaintObject(Reading& reading) {
    const std::string name = reading.operands.empty() ? std::string() : reading.operands.back().name;
    Handle object = Lookup(reading, "/XObject", name);
    if (!object.isStream()) return reading.Add(PageColor::kUndecided);
    Handle kind = object.getDict().getKey("/Subtype");
    if (kind.isNameAndEquals("/Form"))
        reading.Add(JudgeForm(object, reading.resources, reading.state));
    else if (kind.isNameAndEquals("/Image"))
        reading.Add(JudgeImageObject(object, reading.resources, reading.state));
    else
        reading.Add(PageColor::kUndecided);
}

void PdfContentColor::PaintInlineImage(Reading& reading) {
    std::string_view text;
    if (!reading.tokens.TakeInlineDictionary(text)) return reading.Add(PageColor::kUndecided);
    Handle image;
    try {
        image = Handle::parse("<<" + std::string(text) + ">>");
    } catch (const std::exception&) {
        image = Handle::newNull();
    }
    if (!image.isDictionary()) return reading.Add(PageColor::kUndecided);
    const auto value = [&](const char* shortKey, const char* longKey) {
        Handle found = image.getKey(shortKey);
        return found.isNull() ? image.getKey(longKey) : found;
    };
    const auto number = [&](const char* shortKey, const char* longKey, long long other) {
        Handle found = value(shortKey, longKey);
        return found.isInteger() ? std::clamp<long long>(found.getIntValue(), 0, 1 << 20) : other;
    };
    const bool isMask = IsTrue(value("/IM", "/ImageMask"));
    PdfColorSpace space;
    if (!isMask) space = SpaceOf(value("/CS", "/ColorSpace"), reading.resources);
    reading.Add(isMask ? reading.state.fill.color : space.JudgeAll());
    const long long bits = isMask ? 1 : number("/BPC", "/BitsPerComponent", 8) * space.Components();
    const long long size = (number("/W", "/Width", 0) * bits + 7) / 8 * number("/H", "/Height", 0);
    const bool isPlain = value("/F", "/Filter").isNull();
    if (!reading.tokens.SkipInlineData(isPlain ? size : -1)) reading.Add(PageColor::kUndecided);
}

PdfContentColor::FormKey PdfContentColor::KeyOf(const Handle& object, const State& state) {
    return {object.getObjGen(),      state.fill.color,          state.stroke.color,
            state.fill.space.Kind(), state.stroke.space.Kind(), state.strokesText};
}

PageColor PdfContentColor::JudgeForm(Handle form, const Handle& outerResources, const State& state) {
    Handle resources = form.getDict().getKey("/Resources");
    State inner = state;
    // What a colour in a space of the outside means depends on more than can be kept in a key.
    for (Paint* paint : {&inner.fill, &inner.stroke})
        if (!paint->space.IsDevice()) paint->space = PdfColorSpace::Unknown();
    const FormKey key = KeyOf(form, inner);
    const bool isAlike = resources.isDictionary() && !state.glyphs.isInitialized();
    if (isAlike && m_forms.count(key) != 0) return m_forms[key];
    if (!m_open.insert(form.getObjGen()).second) return PageColor::kUndecided;
    std::string content;
    PageColor color = PageColor::kUndecided;
    if (ReadContents(form, content))
        color = Read(content, resources.isDictionary() ? resources : outerResources, inner);
    m_open.erase(form.getObjGen());
    if (isAlike) m_forms[key] = color;
    return color;
}

PageColor PdfContentColor::JudgeImageObject(Handle image, const Handle& resources, const State& state) {
    Handle dictionary = image.getDict();
    if (IsTrue(dictionary.getKey("/ImageMask"))) return state.fill.color;
    const auto known = m_images.find(image.getObjGen());
    if (known != m_images.end()) return known->second;
    if (m_isTimeUp()) return PageColor::kUndecided;
    const PageColor color = JudgeImage(image, SpaceOf(dictionary.getKey("/ColorSpace"), resources), m_rule);
    m_images[image.getObjGen()] = color;
    return color;
}

// A tiling pattern is a content stream that begins anew; one of the second kind paints with `ownColor`.
PageColor PdfContentColor::JudgePattern(Handle pattern, const Handle& resources, PageColor ownColor) {
    Handle dictionary = pattern.isStream() ? pattern.getDict() : pattern;
    if (!dictionary.isDictionary()) return PageColor::kUndecided;
    Handle type = dictionary.getKey("/PatternType");
    if (type.isInteger() && type.getIntValue() == 2)
        return JudgeShading(dictionary.getKey("/Shading"), resources);
    if (!pattern.isStream()) return PageColor::kUndecided;
    Handle paint = dictionary.getKey("/PaintType");
    State state;
    if (!paint.isInteger() || paint.getIntValue() != 1) state.fill.color = state.stroke.color = ownColor;
    return JudgeForm(pattern, resources, state);
}

PageColor PdfContentColor::JudgeShading(Handle shading, const Handle& resources) {
    Handle dictionary = shading.isStream() ? shading.getDict() : shading;
    if (!dictionary.isDictionary()) return PageColor::kUndecided;
    const PdfColorSpace space = SpaceOf(dictionary.getKey("/ColorSpace"), resources);
    if (space.IsMono()) return PageColor::kMono;
    const PageColor ground =
        dictionary.getKey("/Background").isNull() ? PageColor::kMono : PageColor::kUndecided;
    return Both(ground, JudgeFunction(dictionary.getKey("/Function"), space, m_rule));
}

// All of them, whichever are shown.
PageColor PdfContentColor::JudgeGlyphs(Handle font, const Handle& outerResources, const State& state) {
    Handle glyphs = font.getKey("/CharProcs");
    const FormKey key = KeyOf(font, state);
    if (font.isIndirect() && m_forms.count(key) != 0) return m_forms[key];
    if (!glyphs.isDictionary() || !m_open.insert(font.getObjGen()).second) return PageColor::kUndecided;
    Handle resources = font.getKey("/Resources");
    State glyphState = state;
    glyphState.glyphs = Handle();
    PageColor color = PageColor::kMono;
    for (const std::string& name : glyphs.getKeys()) {
        std::string content;
        const bool isRead = !m_isTimeUp() && ReadContents(glyphs.getKey(name), content);
        color = Both(color,
                     isRead ? Read(content, resources.isDictionary() ? resources : outerResources, glyphState)
                            : PageColor::kUndecided);
    }
    m_open.erase(font.getObjGen());
    if (font.isIndirect()) m_forms[key] = color;
    return color;
}

// Those that have an object number are read once.
PdfColorSpace PdfContentColor::SpaceOf(const Handle& object, const Handle& resources) {
    if (!object.isIndirect()) return PdfColorSpace::Read(object, resources, m_rule);
    const auto known = m_spaces.find(object.getObjGen());
    if (known != m_spaces.end()) return known->second;
    return m_spaces[object.getObjGen()] = PdfColorSpace::Read(object, resources, m_rule);
}

const PdfColorSpace& PdfContentColor::SpaceNamed(Reading& reading, const std::string& name) {
    const auto known = reading.spaces.find(name);
    if (known != reading.spaces.end()) return known->second;
    Handle found = reading.resources.getKeyIfDict("/ColorSpace").getKeyIfDict(name);
    Handle object = found.isIndirect() ? found : Handle::newName(name);
    return reading.spaces[name] = SpaceOf(object, reading.resources);
}

QPDFObjectHandle PdfContentColor::Lookup(Reading& reading, const char* kind, const std::string& name) {
    if (name.empty()) return Handle::newNull();
    return reading.resources.getKeyIfDict(kind).getKeyIfDict(name);
}

}  // namespace quirepress
