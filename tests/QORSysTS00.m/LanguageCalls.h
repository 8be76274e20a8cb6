/// @file
/// The language core as the code pages see it, answered by the test. Needs the calls named in CodePages.cmake to be
/// wrapped.
#pragma once

#include "VELSysNLSCore.h"

#include <functional>
#include <string>
#include <vector>

namespace LanguageCalls {

/// The rows of the language table. Empty: there is no table.
extern std::vector<VELSysNLSEntry> s_table;
/// What the decision says.
extern std::string s_codePage;
extern std::string s_langString;
extern long s_maxCharSize;
/// What InitNLSCore() answers.
extern int s_initResult;
/// What RegisterNLSChangeHook() answers, when that is negative.
extern int s_refusal;
/// Runs inside the next request for the record, ahead of its answer.
extern std::function<void()> s_insideNextRequest;
/// Runs inside the next request for rows of the table.
extern std::function<void()> s_insideNextTableRequest;

/// The calls so far, in order, each by its name; with an argument where one matters.
std::vector<std::string> Calls();

/// The record of the decision.
VELSysNLSEnv Record();

/// Makes `codePage` the environment's, as a change of language does.
void Change(const std::string& codePage, const std::string& langString = "");

} // namespace LanguageCalls
