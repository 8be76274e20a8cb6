/// @file
/// All tests of a program in one go, each in a process of its own.
///
/// A test that is started by itself pays for the start of its program, which under a sanitizer takes longer than most
/// tests: registering a thousand tests takes a tenth of a second. Here the program starts once and a copy of it, in
/// which nothing has run yet, is made for each test.
#pragma once

/// Runs every test that isn't disabled and prints what those that fail have written. A test that ends its process has
/// failed, whatever its exit code. What it leaves running is killed; so is one that takes too long. Variables of
/// GoogleTest ("GTEST_...") have no effect.
/// @param argv  With what the program was started.
/// @return 0 when all have passed or were skipped, otherwise 1.
int RunEachTestInItsOwnProcess(char** argv);
