/// @file
/// Tests of the language core in the test's own process: a table, an environment and rows as text.
#pragma once

#include "LanguageChild.h"
#include "ScratchDirectory.h"
#include "VELSysNLSCore.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

/// The columns with "|" between them.
inline std::string ColumnsOf(const VELSysNLSEntry& entry) {
    return entry.language + '|' + entry.alias + '|' + entry.langString + '|' + entry.codePage;
}

/// Takes a list over and frees it.
inline std::vector<std::string> TakeRows(VELSysNLSNode* list) {
    std::vector<std::string> rows;
    while (list != nullptr) {
        const std::unique_ptr<VELSysNLSNode> node(list);
        rows.push_back(ColumnsOf(node->entry));
        list = node->next;
    }
    return rows;
}

/// The environment is German with a comma; the table is in a fresh directory and has the usual rows.
class LanguageTest : public ScratchTest {
protected:
    void SetUp() override {
        for (const char* variable : {"LC_ALL", "LC_CTYPE", "LC_NUMERIC", "LANGUAGE", "VELSysNLSInstallPath"}) {
            unsetenv(variable);
        }
        setenv("LOCPATH", QOR_TEST_LOCALES, 1);
        setenv("LANG", "de_DE.ISO-8859-1", 1);
        setenv("QORReffilesPath", scratch.Path().c_str(), 1);
        setenv("QORInstallPath", "/nowhere", 1);
        std::filesystem::create_directory(scratch / "NLS");
        UseTable(LanguageChild::Table(LanguageChild::Rows));
        ScratchTest::SetUp();
    }

    /// The whole text of the file.
    void UseTable(const std::string& text) { WriteFile(scratch / "NLS/SUPPLANG_R9", text); }
    void UseRows(const std::string& rows) { UseTable(LanguageChild::Table(rows)); }
    void RemoveTable() { std::filesystem::remove_all(scratch / "NLS/SUPPLANG_R9"); }

    /// All rows of the table, or its status.
    static std::vector<std::string> RowsFound() {
        const VELSysNLSEntry all;
        VELSysNLSFilter filter{};
        filter.pattern = &all;
        int count = 1 << 20;
        VELSysNLSNode* list = nullptr;
        const int status = GetNLSInformationA(filter, 0, count, &list);
        std::vector<std::string> rows = TakeRows(list);
        EXPECT_EQ(rows.size(), static_cast<std::size_t>(count));
        return status == 0 ? rows : std::vector<std::string>{"status " + std::to_string(status)};
    }
};
