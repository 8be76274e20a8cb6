/// @file
/// Compares each Unicode conversion with its plain form, between guard pages: the source ends, or starts, at memory
/// that nobody may read, and the target has exactly the room of the result. So whoever reads or writes one byte too
/// far crashes, and as lengths vary, so do the alignments of both.
#pragma once

#include "GuardedMemory.h"
#include "PlainUnicode.h"
#include "VELSysUCAlgorithm.h"

#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>

class ConversionCheck {
public:
    /// All that reads UTF-8. The answer is empty when all is well; otherwise it names what is not.
    std::string UTF8(const char* text, std::size_t size) {
        const std::string atEnd = UTF8Range(_source.CopyAtEnd(text, size), size);
        return atEnd.empty() ? UTF8Range(_source.CopyAtBegin(text, size), size) : atEnd;
    }
    std::string UTF8(const std::string& text) { return UTF8(text.data(), text.size()); }

    /// The conversion to UTF-16 alone, for tests with very many texts.
    std::string UTF8ToUTF16(const char* text, std::size_t size) {
        const char* source = _source.CopyAtEnd(text, size);
        return Compare(source, size, PlainUnicode::FromUTF8<unsigned short>, unchecked::utf8to16, "utf8to16");
    }

    /// All that reads UTF-16.
    std::string UTF16(const unsigned short* text, std::size_t size) {
        const std::string atEnd = UTF16Range(_source.CopyAtEnd(text, size), size);
        return atEnd.empty() ? UTF16Range(_source.CopyAtBegin(text, size), size) : atEnd;
    }
    std::string UTF16(const PlainUnicode::Units& text) { return UTF16(text.data(), text.size()); }

    /// All that reads UTF-32.
    std::string UTF32(const unsigned int* text, std::size_t size) {
        const unsigned int* source = _source.CopyAtEnd(text, size);
        const std::string to16 =
            Compare(source, size, PlainUnicode::FromUTF32<unsigned short>, unchecked::utf32to16, "utf32to16");
        return to16.empty() ? Compare(source, size, PlainUnicode::FromUTF32<char>, unchecked::utf32to8, "utf32to8")
                            : to16;
    }

private:
    using unchecked = VELSysUCAlgorithm::unchecked;

    static constexpr std::size_t Room = 1 << 16;

    template <class Source, class Target>
    using Function = Target* (*)(const Source*, const Source*, Target*);

    template <class Source, class Target>
    std::string Compare(const Source* source, std::size_t size, Function<Source, Target> plain,
                        Function<Source, Target> fast, const char* name) {
        auto* expected = reinterpret_cast<Target*>(_expected);
        const auto count = static_cast<std::size_t>(plain(source, source + size, expected) - expected);
        Target* target = _target.AtEnd<Target>(count);
        const Target* end = fast(source, source + size, target);
        if (end != target + count) {
            return Complaint(name, source, size) + "gives " + std::to_string(end - target) + " in place of " +
                   std::to_string(count);
        }
        if (count != 0 && std::memcmp(target, expected, count * sizeof(Target)) != 0) {
            return Complaint(name, source, size) + "differs";
        }
        return {};
    }

    std::string UTF8Range(const char* source, std::size_t size) {
        std::string result =
            Compare(source, size, PlainUnicode::FromUTF8<unsigned short>, unchecked::utf8to16, "utf8to16");
        if (result.empty()) {
            result = Compare(source, size, PlainUnicode::FromUTF8<unsigned int>, unchecked::utf8to32, "utf8to32");
        }
        const char* p = source;
        const bool isUTF8 = VELSysUCAlgorithm::IsUTF8(p, size) == 0;
        if (result.empty() && isUTF8 != PlainUnicode::IsUTF8(source, source + size)) {
            result = Complaint("IsUTF8", source, size) + (isUTF8 ? "accepts it" : "refuses it");
        }
        return result.empty() ? Resume(source, size) : result;
    }

    std::string UTF16Range(const unsigned short* source, std::size_t size) {
        std::string result = Compare(source, size, PlainUnicode::FromUTF16<char>, unchecked::utf16to8, "utf16to8");
        if (result.empty()) {
            result = Compare(source, size, PlainUnicode::FromUTF16<unsigned int>, unchecked::utf16to32, "utf16to32");
        }
        return result.empty() ? Resume(source, size) : result;
    }

    std::string Resume(const char* source, std::size_t size) {
        const auto length = static_cast<int>(size);
        auto* expected = reinterpret_cast<unsigned short*>(_expected);
        const auto plain = PlainUnicode::ResumeUTF8(source, length, expected, static_cast<unsigned int>(size));
        const auto count = static_cast<std::size_t>(plain.result);
        const char* p = source;
        int left = length;
        if (VELSysUCAlgorithm::ConvertUTF8ToUTF16(p, left, nullptr, 0) != plain.result) {
            return Complaint("ConvertUTF8ToUTF16", source, size) + "measures otherwise";
        }
        // The room is told as ample, though the target has no more than the result takes.
        unsigned short* target = _target.AtEnd<unsigned short>(count);
        p = source;
        left = length;
        const int result = VELSysUCAlgorithm::ConvertUTF8ToUTF16(p, left, target, static_cast<unsigned int>(size));
        if (result != plain.result || p != plain.source || left != plain.length ||
            std::memcmp(target, expected, count * sizeof(unsigned short)) != 0) {
            return Complaint("ConvertUTF8ToUTF16", source, size) + "differs";
        }
        return {};
    }

    std::string Resume(const unsigned short* source, std::size_t size) {
        const auto length = static_cast<int>(size);
        const auto room = static_cast<unsigned int>(3 * size + 4);
        const auto plain = PlainUnicode::ResumeUTF16(source, length, _expected, room);
        const auto count = static_cast<std::size_t>(plain.result);
        const unsigned short* p = source;
        int left = length;
        if (VELSysUCAlgorithm::ConvertUTF16ToUTF8(p, left, nullptr, 0) != plain.result) {
            return Complaint("ConvertUTF16ToUTF8", source, size) + "measures otherwise";
        }
        char* target = _target.AtEnd<char>(count);
        p = source;
        left = length;
        const int result = VELSysUCAlgorithm::ConvertUTF16ToUTF8(p, left, target, room);
        if (result != plain.result || p != plain.source || left != plain.length ||
            std::memcmp(target, _expected, count) != 0) {
            return Complaint("ConvertUTF16ToUTF8", source, size) + "differs";
        }
        return {};
    }

    template <class Source>
    static std::string Complaint(const char* name, const Source* source, std::size_t size) {
        std::ostringstream text;
        text << name << " of " << size << " units" << std::hex << std::setfill('0');
        for (std::size_t i = 0; i < size && i < 300; ++i) {
            text << ' ' << std::setw(2 * sizeof(Source))
                 << (static_cast<unsigned int>(source[i]) & (0xFFFFFFFFU >> (32 - 8 * sizeof(Source))));
        }
        text << ": ";
        return text.str();
    }

    GuardedMemory _source{Room};
    GuardedMemory _target{4 * Room};
    alignas(8) char _expected[4 * Room];
};
