#include "PathAccess.h"
#include "StringFuzz.h"
#include "VELSysPathType.h"
#include "VELSysStatus.h"
#include "VELSysUCAlgorithm.h"

#include <cstdint>
#include <cstring>
#include <string>

// An input is a chain of steps: one byte that chooses, one that says how long the text behind it is.

namespace {

using StringFuzz::Require;
using VEL::internal::PathAccess;

const VELSysPathImpl& ImplOf(const VELSysPath& path) {
    return *PathAccess::Of(path);
}

std::string TextOf(const VELSysPath& path) {
    const char* const text = PathAccess::Text(ImplOf(path));
    return text != nullptr ? text : "";
}

void RequireSound(const VELSysPath& path) {
    const VELSysPathImpl& impl = ImplOf(path);
    const std::string text = TextOf(path);
    Require(text.size() == PathAccess::Length(impl));
    const char* bytes = text.data();
    Require(VELSysUCAlgorithm::IsUTF8(bytes, text.size()) == 0);
    const unsigned int mask = path.GetTypeMask();
    Require(mask == VELSysPathTypeInvalid || mask == VELSysPathTypeAbsolute || mask == VELSysPathTypeRelative ||
            mask == VELSysPathTypeHttp || mask == VELSysPathTypeHttps || mask == VELSysPathTypeLogical);
    Require(!path.IsValid() || PathAccess::RootLength(impl) <= text.size());
    Require((mask == VELSysPathTypeAbsolute) <= (text[0] == '/'));
}

/// The parts of a path that can be split make up the path again.
void RequireParts(const VELSysPath& path) {
    VELSysPath parent;
    QORSysTSUnicodeString name;
    if (path.split(parent, name) == VEL::StatusOk) {
        RequireSound(parent);
        const std::string component(name.ConvertToChar());
        const std::string tail = "/" + component;
        const std::string head = TextOf(parent);
        const std::string text = TextOf(path);
        const std::string stripped = text.back() == '/' ? text.substr(0, text.size() - 1) : text;
        Require(stripped == head + tail || (head == "/" && stripped == tail));
    }
    VELSysPath itself(path);
    itself.split(itself, name);
    RequireSound(itself);
    QORSysTSUnicodeString directory;
    QORSysTSUnicodeString extension;
    path.split(parent, directory, name, extension);
    RequireSound(path.GetParent(nullptr));
    RequireSound(path.GetName(nullptr));
    Require(path == path);
}

QORUnicodeString StringOf(const std::string& text, bool isWide) {
    QORUnicodeString s;
    if (isWide) {
        const std::u16string units(text.begin(), text.end());
        s.BuildFromUCChar(reinterpret_cast<const unsigned short*>(units.data()), static_cast<int>(units.size()));
    } else {
        s = QORUnicodeString(text.data(), text.size());
    }
    return s;
}

void Step(VELSysPath& path, unsigned int choice, const std::string& text) {
    const QORUnicodeString s = StringOf(text, (choice & 0x80) != 0);
    switch (choice % 12) {
    case 0:
        path.Set(text.c_str());
        break;
    case 1:
        path.Set(s);
        break;
    case 2:
        path.Set(s.ConvertToUCChar());
        break;
    case 3:
        path.Append(text.c_str());
        break;
    case 4:
        path.Append(s);
        break;
    case 5:
        path.Append(path);
        break;
    case 6:
        path.AddExtension(text.c_str());
        break;
    case 7:
        path.AddExtension(s);
        break;
    case 8:
        path.RemExtension(nullptr);
        break;
    case 9:
        path.RemExtension(s);
        break;
    case 10:
        path = path.GetParent(nullptr);
        break;
    default:
        path = path.GetName(nullptr);
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    VELSysPath path;
    const std::uint8_t* const end = data + size;
    while (end - data >= 2) {
        const unsigned int choice = data[0];
        const std::ptrdiff_t left = end - data - 2;
        const std::ptrdiff_t length = data[1] < left ? data[1] : left;
        // Every fourth text is about as long as those that are refused.
        const std::string text(reinterpret_cast<const char*>(data + 2), static_cast<std::size_t>(length));
        Step(path, choice, (choice & 0x60) == 0x60 ? std::string(1020, 'x') + text : text);
        RequireSound(path);
        RequireParts(path);
        data += 2 + length;
    }
    return 0;
}
