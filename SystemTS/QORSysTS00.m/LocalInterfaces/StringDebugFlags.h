/// @file
/// Keeps the word that debugger extensions read true to the environment's code page.
#pragma once

namespace VEL::internal {

/// Records whether narrow text is UTF-8; called whenever the environment converter is made or replaced.
void TellDebuggerOfCodePage(bool isUTF8);

} // namespace VEL::internal
