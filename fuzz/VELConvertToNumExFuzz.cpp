#include "PlainNumber.h"
#include "StringFuzz.h"
#include "VELNumConvert.h"

#include <cstring>
#include <iterator>

namespace {

using StringFuzz::Require;

/// In the locale of the thread.
void Compare(const QORUnicodeString& s, int separator) {
    VEL::NumConvertCtx ctx;
    ctx.SetDecimalSeparator(separator);
    double value = -77.25;
    double expected = value;
    const int status = VEL::ConvertToNumEx(value, s, &ctx);
    Require(status == PlainNumber::Convert(expected, s, ctx.GetDecimalSeparator(), nullptr));
    Require(std::memcmp(&value, &expected, sizeof value) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int s_environment = (StringFuzz::UseUTF8(), 0);
    static_cast<void>(s_environment);
    constexpr int separators[] = {'.', ',', ' ', 'e', '1', 0xB7, 0x66B, -1};
    StringFuzz::Input input(data, size);
    const unsigned int choices = input.TakeByte();
    const bool isOwn = (choices & 0x80) != 0;
    const std::string text = input.Rest();
    QORUnicodeString s;
    s.BuildFromUTF8(text.data(), text.size());
    const VELSysCLocale::ThreadLC scope(LC_ALL, isOwn ? "C" : nullptr, nullptr);
    Compare(s, separators[choices % std::size(separators)]);
    return 0;
}
