#include "QORThrLibraryManager.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* s_symbol = "QORSysMTTestPlugInAnswer";

int Call(void* address) {
    return reinterpret_cast<int (*)()>(address)();
}

TEST(QORThrLibraryManagerTest, LoadsTheLibraryAsNeeded) {
    void* const address = QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, s_symbol);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(Call(address), 42);
}

TEST(QORThrLibraryManagerTest, TheLibraryStaysLoaded) {
    void* const address = QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, s_symbol);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, s_symbol), address);
}

TEST(QORThrLibraryManagerTest, ABareNameMeansTheFileOfThatName) {
    // Once it is loaded it is found by its file name, wherever it stands.
    void* const address = QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, s_symbol);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress("QORSysMTTestPlugIn", s_symbol), address);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress("libQORSysMTTestPlugIn.so", s_symbol), address);
}

TEST(QORThrLibraryManagerTest, AMissingLibraryGivesNull) {
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress("QORSysMTNoSuchLibrary", s_symbol), nullptr);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress("libQORSysMTNoSuchLibrary.so", s_symbol), nullptr);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress("/nowhere/QORSysMTNoSuchLibrary", s_symbol), nullptr);
}

TEST(QORThrLibraryManagerTest, ANameThatIsTooLongGivesNull) {
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(std::string(5000, 'x').c_str(), s_symbol), nullptr);
}

TEST(QORThrLibraryManagerTest, AnEmptyNameIsNoLibrary) {
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress("", "malloc"), nullptr);
}

TEST(QORThrLibraryManagerTest, AMissingSymbolGivesNull) {
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, "QORSysMTTestPlugInMissing"), nullptr);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, nullptr), nullptr);
}

TEST(QORThrLibraryManagerTest, WithoutALibraryTheProgramIsSearched) {
    EXPECT_NE(QORThrLibraryManager::GetFunctionAddress(nullptr, "malloc"), nullptr);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(nullptr, "QORSysMTTestPlugInMissing"), nullptr);
}

TEST(QORThrLibraryManagerTest, ThreadsLookUpAtOnce) {
    RunAtOnce(4, [](int) {
        for (int round = 0; round < 20; ++round) {
            void* const address = QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, s_symbol);
            EXPECT_TRUE(address && Call(address) == 42);
        }
    });
}

} // namespace
