// Numbers in QORUnicodeString.

#include "NumberText.h"
#include "QORUnicodeString.h"

using namespace VEL::internal;

int QORUnicodeString::BuildFromNum(int value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::BuildFromNum(unsigned int value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::BuildFromNum(long value, const char* format) {
    return BuildNumber(*this, value, FormatFor<long>(format));
}

int QORUnicodeString::BuildFromNum(unsigned long value, const char* format) {
    return BuildNumber(*this, value, FormatFor<unsigned long>(format));
}

int QORUnicodeString::BuildFromNum(long long value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::BuildFromNum(unsigned long long value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::BuildFromNum(double value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::BuildFromNum(long double value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::ConvertNumToString(int value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::ConvertNumToString(long value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::ConvertNumToString(unsigned long value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::ConvertNumToString(double value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::ConvertNumToString(long double value, const char* format) {
    return BuildNumber(*this, value, format);
}

int QORUnicodeString::ConvertToNum(int* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, format);
}

int QORUnicodeString::ConvertToNum(unsigned int* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, format);
}

int QORUnicodeString::ConvertToNum(long* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, FormatFor<long>(format));
}

int QORUnicodeString::ConvertToNum(unsigned long* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, FormatFor<unsigned long>(format));
}

int QORUnicodeString::ConvertToNum(long long* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, format);
}

int QORUnicodeString::ConvertToNum(unsigned long long* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, format);
}

int QORUnicodeString::ConvertToNum(double* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, format);
}

int QORUnicodeString::ConvertToNum(long double* value, const char* format) const {
    return ReadNumber(ConvertToChar(), value, format);
}
