/// @file
/// The lookup of variables, which the language support asks for from below: what the application keeps counts, too.
#pragma once

class QORUnicodeString;

/// See VELSysEnviron.h.
int VELGetEnvInt(const char* name, QORUnicodeString* value);
