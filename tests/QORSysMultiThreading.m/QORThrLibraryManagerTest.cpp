#include "QORThrLibraryManager.h"

#include "TestSupport.h"

#include <dlfcn.h>
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

/// True for a library that is loaded, whoever did it.
bool IsLoaded(const char* file) {
    void* const handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
    return handle && dlclose(handle) == 0;
}

TEST(QORThrLibraryManagerTest, ALibraryStaysLoadedOnlyIfSomethingWasFoundInIt) {
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(TEST_SPARE_PLUG_IN, "QORSysMTTestPlugInMissing"), nullptr);
    EXPECT_FALSE(IsLoaded(TEST_SPARE_PLUG_IN));
    EXPECT_NE(QORThrLibraryManager::GetFunctionAddress(TEST_SPARE_PLUG_IN, "QORSysMTTestSparePlugInAnswer"), nullptr);
    EXPECT_TRUE(IsLoaded(TEST_SPARE_PLUG_IN));
}

TEST(QORThrLibraryManagerTest, ALibraryWithMissingPartsIsMissing) {
    // What is missing is called by another function than the one that is looked up.
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(TEST_BROKEN_PLUG_IN, "QORSysMTTestBrokenPlugInAnswer"), nullptr);
    EXPECT_FALSE(IsLoaded(TEST_BROKEN_PLUG_IN));
}

TEST(QORThrLibraryManagerTest, TheSymbolsOfALibraryAreNotOfferedToOthers) {
    EXPECT_NE(QORThrLibraryManager::GetFunctionAddress(TEST_PLUG_IN, s_symbol), nullptr);
    EXPECT_EQ(QORThrLibraryManager::GetFunctionAddress(nullptr, s_symbol), nullptr);
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
