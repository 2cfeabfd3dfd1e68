#include "documents/pdf_color_space.h"

#include <algorithm>
#include <cmath>
#include <qpdf/QPDFObjectHandle.hh>

#include "documents/qpdf_file.h"

namespace quirepress {
namespace {

using Handle = QPDFObjectHandle;
using Family = PdfColorSpace::Family;

constexpr int kDeepest = 8;
constexpr int kMostInks = 32;
constexpr int kMostFunctions = 50;
constexpr std::size_t kProfileHeader = 128;
constexpr std::size_t kLongestPalette = std::size_t{256} * kMostInks;

std::string NameOf(Handle object) {
    return object.isName() ? object.getName() : std::string();
}

std::vector<double> Numbers(Handle array) {
    std::vector<double> numbers;
    if (!array.isArray() || array.getArrayNItems() > kMostInks) return numbers;
    for (int i = 0; i < array.getArrayNItems(); ++i) {
        double value = 0;
        if (!array.getArrayItem(i).getValueAsNumber(value)) return {};
        numbers.push_back(value);
    }
    return numbers;
}

bool IsMonoInk(const std::string& name) {
    return name == "/Black" || name == "/None" || name == "/All";
}

bool IsProcessInk(const std::string& name) {
    return name == "/Cyan" || name == "/Magenta" || name == "/Yellow" || name == "/Black" || name == "/None";
}

// An exponential function's colours at its ends. False for any other function.
bool ReadRamp(Handle function, std::size_t components, std::vector<double>& from, std::vector<double>& to,
              double& exponent) {
    if (!function.isDictionary() || !function.getKey("/FunctionType").isInteger() ||
        function.getKey("/FunctionType").getIntValue() != 2)
        return false;
    from = function.hasKey("/C0") ? Numbers(function.getKey("/C0")) : std::vector<double>{0};
    to = function.hasKey("/C1") ? Numbers(function.getKey("/C1")) : std::vector<double>{1};
    return from.size() == components && to.size() == components &&
           function.getKey("/N").getValueAsNumber(exponent);
}

// Functions may lie in functions, and the same in many.
PageColor JudgePart(Handle function, const PdfColorSpace& space, const GreyRule& rule, int& functionsLeft) {
    std::vector<double> from;
    std::vector<double> to;
    double exponent = 1;
    if (ReadRamp(function, static_cast<std::size_t>(space.Components()), from, to, exponent)) {
        // Between two colours without a hue there is none, where grey is a straight line.
        const bool isStraight = space.Kind() == Family::kRgb || space.Kind() == Family::kCmyk;
        const PageColor ends = Both(space.Judge(from, rule), space.Judge(to, rule));
        return isStraight ? ends : Both(ends, PageColor::kUndecided);
    }
    const bool isStitched = function.isDictionary() && function.getKey("/Functions").isArray();
    if (--functionsLeft < 0 || !isStitched) return PageColor::kUndecided;
    PageColor color = PageColor::kMono;
    Handle parts = function.getKey("/Functions");
    for (int i = 0; i < parts.getArrayNItems() && color != PageColor::kColor; ++i)
        color = Both(color, JudgePart(parts.getArrayItem(i), space, rule, functionsLeft));
    return color;
}

}  // namespace

PdfColorSpace PdfColorSpace::Read(const Handle& object, const Handle& resources, const GreyRule& rule) {
    return ReadAt(object, resources, rule, 0);
}

PdfColorSpace PdfColorSpace::ReadAt(Handle object, const Handle& resources, const GreyRule& rule, int depth) {
    if (depth > kDeepest) return Unknown();
    if (object.isName()) return ReadNamed(object.getName(), resources, rule, depth);
    if (object.isArray()) return ReadArray(object, resources, rule, depth);
    return Unknown();
}

PdfColorSpace PdfColorSpace::ReadNamed(const std::string& name, Handle resources, const GreyRule& rule,
                                       int depth) {
    struct Device {
        const char* names[3];
        const char* standIn;
        Family family;
        int components;
    };
    static const Device kDevices[] = {
        {{"/DeviceGray", "/G", "/CalGray"}, "/DefaultGray", Family::kGray, 1},
        {{"/DeviceRGB", "/RGB", "/CalRGB"}, "/DefaultRGB", Family::kRgb, 3},
        {{"/DeviceCMYK", "/CMYK", "/CalCMYK"}, "/DefaultCMYK", Family::kCmyk, 4}};
    Handle spaces = resources.getKeyIfDict("/ColorSpace");
    for (const Device& device : kDevices) {
        if (std::find(std::begin(device.names), std::end(device.names), name) == std::end(device.names))
            continue;
        PdfColorSpace plain(device.family, device.components);
        Handle standIn = spaces.getKeyIfDict(device.standIn);
        if (standIn.isNull() || standIn.isName()) return plain;
        const PdfColorSpace replaced = ReadAt(standIn, resources, rule, depth + 1);
        return replaced.m_family == plain.m_family ? plain
                                                   : PdfColorSpace(Family::kUnknown, plain.m_components);
    }
    if (name == "/Pattern") return {Family::kPattern, 0};
    Handle found = spaces.getKeyIfDict(name);
    return ReadAt(found, resources, rule, depth + 1);
}

PdfColorSpace PdfColorSpace::ReadArray(Handle array, const Handle& resources, const GreyRule& rule,
                                       int depth) {
    const std::string name = array.getArrayNItems() > 0 ? NameOf(array.getArrayItem(0)) : std::string();
    if (name == "/ICCBased" && array.getArrayNItems() > 1) return ReadProfile(array.getArrayItem(1));
    if (name == "/Lab") return {Family::kLab, 3};
    if (name == "/Indexed" || name == "/I") return ReadIndexed(array, resources, rule, depth);
    if (name == "/Separation" || name == "/DeviceN") return ReadInks(array, resources, rule, depth);
    if (name.empty()) return Unknown();
    PdfColorSpace space = ReadNamed(name, resources, rule, depth + 1);
    if (space.m_family == Family::kPattern && array.getArrayNItems() > 1)
        space.m_base =
            std::make_shared<PdfColorSpace>(ReadAt(array.getArrayItem(1), resources, rule, depth + 1));
    return space;
}

// A profile says itself what its components are; "N" alone may lie.
PdfColorSpace PdfColorSpace::ReadProfile(Handle stream) {
    if (!stream.isStream()) return Unknown();
    Handle count = stream.getDict().getKey("/N");
    const long long components = count.isInteger() ? count.getIntValue() : 0;
    const std::string header = ReadStreamStart(stream, qpdf_dl_specialized, kProfileHeader);
    const std::string kind = header.size() >= 20 ? header.substr(16, 4) : std::string();
    if (components == 1 && kind == "GRAY") return {Family::kGray, 1};
    if (components == 3 && kind == "RGB ") return {Family::kRgb, 3};
    if (components == 4 && kind == "CMYK") return {Family::kCmyk, 4};
    return {Family::kUnknown, static_cast<int>(std::clamp<long long>(components, 0, kMostInks))};
}

PdfColorSpace PdfColorSpace::ReadIndexed(Handle array, const Handle& resources, const GreyRule& rule,
                                         int depth) {
    PdfColorSpace space(Family::kIndexed, 1);
    if (array.getArrayNItems() < 4) return {Family::kUnknown, 1};
    const PdfColorSpace base = ReadAt(array.getArrayItem(1), resources, rule, depth + 1);
    Handle table = array.getArrayItem(3);
    std::string bytes;
    if (table.isString()) bytes = table.getStringValue();
    if (table.isStream() && !ReadStream(table, qpdf_dl_specialized, kLongestPalette, bytes)) bytes.clear();
    const auto width = static_cast<std::size_t>(base.m_components);
    if (base.m_family == Family::kIndexed || base.m_family == Family::kPattern || width == 0)
        return {Family::kUnknown, 1};
    for (std::size_t at = 0; at + width <= bytes.size() && space.m_palette.size() < 256; at += width) {
        std::vector<double> values;
        for (std::size_t i = 0; i < width; ++i)
            values.push_back(static_cast<unsigned char>(bytes[at + i]) / 255.0);
        // Bytes stand for -100 to 100 there, or for what the space's range says.
        const bool isLab = base.m_family == Family::kLab;
        space.m_palette.push_back(isLab ? PageColor::kUndecided : base.Judge(values, rule));
    }
    return space;
}

PdfColorSpace PdfColorSpace::ReadInks(Handle array, const Handle& resources, const GreyRule& rule,
                                      int depth) {
    if (array.getArrayNItems() < 4) return Unknown();
    std::vector<std::string> names;
    Handle inks = array.getArrayItem(1);
    if (inks.isName()) names.push_back(inks.getName());
    const int count = inks.isArray() ? std::min(inks.getArrayNItems(), kMostInks) : 0;
    for (int i = 0; i < count; ++i) names.push_back(NameOf(inks.getArrayItem(i)));
    PdfColorSpace space(Family::kUnknown, static_cast<int>(names.size()));
    if (names.empty()) return space;
    const PdfColorSpace base = ReadAt(array.getArrayItem(2), resources, rule, depth + 1);
    if (std::all_of(names.begin(), names.end(), IsMonoInk) || base.m_family == Family::kGray) {
        space.m_family = Family::kMonoInk;
    } else if (std::all_of(names.begin(), names.end(), IsProcessInk)) {
        space.m_family = Family::kProcessInks;
        space.m_inks = names;
    } else if (names.size() == 1 &&
               ReadRamp(array.getArrayItem(3), static_cast<std::size_t>(base.m_components), space.m_from,
                        space.m_to, space.m_exponent)) {
        space.m_family = Family::kTint;
        space.m_base = std::make_shared<PdfColorSpace>(base);
    }
    return space;
}

PageColor PdfColorSpace::Judge(const std::vector<double>& values, const GreyRule& rule) const {
    if (m_family == Family::kGray || m_family == Family::kMonoInk) return PageColor::kMono;
    if (m_family == Family::kPattern || values.size() != static_cast<std::size_t>(m_components))
        return PageColor::kUndecided;
    switch (m_family) {
        case Family::kRgb:
            return JudgeAdditive(values.data(), values.size(), rule);
        case Family::kCmyk:
            return JudgeProcessInks(values[0], values[1], values[2], values[3], rule);
        case Family::kLab: {
            const double limit = 100 * rule.spread;
            const bool isGrey = std::abs(values[1]) <= limit / 2 && std::abs(values[2]) <= limit / 2;
            return isGrey ? PageColor::kMono : PageColor::kColor;
        }
        case Family::kIndexed: {
            const auto size = static_cast<double>(m_palette.size());
            if (!(values[0] >= 0 && values[0] < size)) return PageColor::kUndecided;
            return m_palette[static_cast<std::size_t>(values[0])];
        }
        case Family::kProcessInks: {
            double inks[4] = {};
            const std::string order[4] = {"/Cyan", "/Magenta", "/Yellow", "/Black"};
            for (std::size_t i = 0; i < values.size(); ++i)
                for (std::size_t ink = 0; ink < 4; ++ink)
                    if (m_inks[i] == order[ink]) inks[ink] = values[i];
            return JudgeProcessInks(inks[0], inks[1], inks[2], inks[3], rule);
        }
        case Family::kTint: {
            const double share = std::pow(std::clamp(values[0], 0.0, 1.0), m_exponent);
            std::vector<double> mixed;
            for (std::size_t i = 0; i < m_from.size(); ++i)
                mixed.push_back(m_from[i] + share * (m_to[i] - m_from[i]));
            return m_base->Judge(mixed, rule);
        }
        default:
            return PageColor::kUndecided;
    }
}

PageColor PdfColorSpace::JudgeAll() const {
    if (m_family == Family::kGray || m_family == Family::kMonoInk) return PageColor::kMono;
    const bool isGrey = m_family == Family::kIndexed && !m_palette.empty() &&
                        std::all_of(m_palette.begin(), m_palette.end(),
                                    [](PageColor color) { return color == PageColor::kMono; });
    return isGrey ? PageColor::kMono : PageColor::kUndecided;
}

PageColor PdfColorSpace::JudgeInitial(const GreyRule& rule) const {
    switch (m_family) {
        case Family::kRgb:
        case Family::kCmyk:
        case Family::kLab:
            return PageColor::kMono;  // black
        case Family::kIndexed:
            return Judge({0}, rule);
        case Family::kPattern:
            return PageColor::kMono;  // paints nothing
        default:
            return Judge(std::vector<double>(static_cast<std::size_t>(m_components), 1.0), rule);
    }
}

PageColor JudgeFunction(const Handle& function, const PdfColorSpace& space, const GreyRule& rule) {
    int functionsLeft = kMostFunctions;
    return space.IsMono() ? PageColor::kMono : JudgePart(function, space, rule, functionsLeft);
}

}  // namespace quirepress
