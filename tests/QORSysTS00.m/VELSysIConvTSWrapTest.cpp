/// @file
/// Handles and descriptors of the converter registry, while the session lasts.

#include "VELSysIConvTSWrap.h"
#include "HeapLog.h"
#include "IConvCalls.h"
#include "VELSysStatus.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <thread>

using IConvCalls::Companion;
using IConvCalls::HandleOf;
using IConvCalls::None;
using IConvCalls::Opened;
using IConvCalls::Opens;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string Convert(iconv_t descriptor, std::string text) {
    char converted[32];
    char* source = text.data();
    char* target = converted;
    std::size_t sourceLeft = text.size();
    std::size_t room = sizeof converted;
    EXPECT_EQ(iconv(descriptor, &source, &sourceLeft, &target, &room), 0u);
    return {converted, target};
}

} // namespace

TEST(IConvHandles, FirstPairHasHandleZero) {
    EXPECT_EQ(HandleOf("UTF-16LE", "ISO-8859-1"), 0);
}

TEST(IConvHandles, BothDirectionsOfAPairShareItsBase) {
    EXPECT_EQ(HandleOf("A", "B"), 0);
    EXPECT_EQ(HandleOf("C", "D"), 2);
    EXPECT_EQ(HandleOf("B", "A"), 1);
    EXPECT_EQ(HandleOf("D", "C"), 3);
    EXPECT_EQ(HandleOf("A", "B"), 0) << "registered again";
    EXPECT_EQ(HandleOf("A", "C"), 4) << "no entry for what was known";
}

TEST(IConvHandles, CodeSetWithItselfIsAPairOfItsOwn) {
    EXPECT_EQ(HandleOf("A", "A"), 0);
    EXPECT_EQ(HandleOf("A", "A"), 0);
    EXPECT_EQ(HandleOf("A", "B"), 2);
}

TEST(IConvHandles, NamesAreComparedExactly) {
    EXPECT_EQ(HandleOf("UTF-16LE", "UTF-8"), 0);
    EXPECT_EQ(HandleOf("UTF-16LE", "utf-8"), 2);
    EXPECT_EQ(HandleOf("UTF-16LE", "UTF-"), 4);
    EXPECT_EQ(HandleOf("", ""), 6);
}

TEST(IConvHandles, NamesAreCopied) {
    char to[] = "UTF-16LE";
    char from[] = "ISO-8859-1";
    const IConvDesc_t handle = HandleOf(to, from);
    to[0] = from[0] = 'X';
    EXPECT_EQ(HandleOf("UTF-16LE", "ISO-8859-1"), handle);
    EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(handle), None);
}

TEST(IConvHandles, NullNamesAreRefused) {
    IConvDesc_t handle = -77;
    EXPECT_EQ(VELSysIConvTSWrap::Open(nullptr, "A", handle), static_cast<int>(0x80004005));
    EXPECT_EQ(VELSysIConvTSWrap::Open("A", nullptr, handle), static_cast<int>(0x80004005));
    EXPECT_EQ(VELSysIConvTSWrap::Open(nullptr, nullptr, handle), static_cast<int>(0x80004005));
    EXPECT_EQ(handle, -77);
    EXPECT_EQ(HandleOf("A", "B"), 0) << "nothing was registered";
}

TEST(IConvHandles, RegisteringOpensNothing) {
    HandleOf("UTF-16LE", "ISO-8859-1");
    HandleOf("no such code set", "nor this one");
    EXPECT_THAT(Opens(), IsEmpty());
}

TEST(IConvInit, MakesMutexAndQueueOnce) {
    VELSysIConvTSWrap::sInitIConvTS(nullptr);
    VELSysIConvTSWrap::sInitIConvTS(nullptr);
    HandleOf("A", "B");
    EXPECT_THAT(Companion(), ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0"));
}

TEST(IConvInit, IsMadeByTheFirstRegistration) {
    HandleOf("A", "B");
    EXPECT_THAT(Companion(), ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0"));
}

TEST(IConvDescriptors, FirstRequestOpensForwardThenBackward) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    const iconv_t forward = VELSysIConvTSWrap::GetIConvDesc(handle);
    EXPECT_THAT(Opens(), ElementsAre("ISO-8859-1 > UTF-16LE", "UTF-16LE > ISO-8859-1"));
    const iconv_t backward = VELSysIConvTSWrap::GetIConvDesc(handle + 1);
    EXPECT_THAT(Opened(), ElementsAre(forward, backward));
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), forward);
    EXPECT_EQ(Opens().size(), 2u) << "no further one";
}

TEST(IConvDescriptors, OddHandleMayComeFirst) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    const iconv_t backward = VELSysIConvTSWrap::GetIConvDesc(handle + 1);
    EXPECT_THAT(Opens(), ElementsAre("ISO-8859-1 > UTF-16LE", "UTF-16LE > ISO-8859-1"));
    EXPECT_THAT(Opened(), ElementsAre(VELSysIConvTSWrap::GetIConvDesc(handle), backward));
}

TEST(IConvDescriptors, ConvertInTheirDirection) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    EXPECT_EQ(Convert(VELSysIConvTSWrap::GetIConvDesc(handle), "a\xE9"), std::string("a\0\xE9\0", 4));
    EXPECT_EQ(Convert(VELSysIConvTSWrap::GetIConvDesc(handle + 1), std::string("a\0\xE9\0", 4)), "a\xE9");
}

TEST(IConvDescriptors, EntriesGoOnTheQueueAtOnce) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    VELSysIConvTSWrap::GetIConvDesc(handle);
    VELSysIConvTSWrap::GetIConvDesc(handle + 1);
    EXPECT_THAT(Companion(), ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0", "PushFirst -1"));
}

TEST(IConvDescriptors, EntryIsOnTheQueueWhenTheFirstIsOpened) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    std::vector<std::string> before;
    IConvCalls::InsideNextOpen([&] { before = Companion(); });
    VELSysIConvTSWrap::GetIConvDesc(handle);
    EXPECT_THAT(before, ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0", "PushFirst -1"));
}

namespace {

/// What follows an entry of the thread's list: the last field, behind the handle, the mark and both descriptors.
const void* NextOf(const void* entry) {
    const void* next = nullptr;
    std::memcpy(&next, static_cast<const char*>(entry) + 8 + 2 * sizeof(iconv_t), sizeof next);
    return next;
}

/// The thread's entries in the order of the list, by their numbers in `entries`.
std::vector<std::size_t> OrderOf(const std::vector<const void*>& entries) {
    const auto isHead = [&](const void* entry) { return std::ranges::find(entries, entry, NextOf) == entries.end(); };
    std::vector<std::size_t> order;
    for (const void* entry = *std::ranges::find_if(entries, isHead); entry != nullptr; entry = NextOf(entry)) {
        order.push_back(static_cast<std::size_t>(std::ranges::find(entries, entry) - entries.begin()));
    }
    return order;
}

} // namespace

TEST(IConvDescriptors, StandInFrontWhenTheyWereUsedLast) {
    const IConvDesc_t handles[] = {HandleOf("UTF-16LE", "ISO-8859-1"), HandleOf("UTF-16LE", "no such code set"),
                                   HandleOf("UTF-16LE", "ISO-8859-2")};
    for (const IConvDesc_t handle : handles) {
        VELSysIConvTSWrap::GetIConvDesc(handle);
    }
    const auto entries = IConvCalls::Entries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_THAT(OrderOf(entries), ElementsAre(2, 1, 0)) << "a new one is in front";
    const struct {
        IConvDesc_t handle;
        std::vector<std::size_t> order;
    } rows[] = {{handles[2], {2, 1, 0}},
                {handles[0], {0, 2, 1}},
                {handles[2] + 1, {2, 0, 1}},
                {handles[1], {1, 2, 0}},
                {handles[1] + 1, {1, 2, 0}}};
    for (const auto& row : rows) {
        VELSysIConvTSWrap::GetIConvDesc(row.handle);
        EXPECT_EQ(OrderOf(entries), row.order) << row.handle;
    }
}

TEST(IConvDescriptors, UnknownHandleHasNoneAndLeavesNothing) {
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(0), None) << "nothing is registered";
    EXPECT_THAT(Companion(), IsEmpty());
    EXPECT_EQ(HandleOf("UTF-16LE", "ISO-8859-1"), 0);
    for (const IConvDesc_t handle : {2, 3, -1, -2, 0x7fffffff, -0x7fffffff - 1}) {
        EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None) << handle;
    }
    EXPECT_THAT(Companion(), ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0"));
    EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(0), None);
    EXPECT_EQ(HandleOf("UTF-16LE", "ISO-8859-2"), 2);
    EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(2), None);
}

TEST(IConvDescriptors, UnknownNamesCostOneAttemptPerThread) {
    const IConvDesc_t handle = HandleOf("UTF-16LE", "no such code set");
    const auto ask = [handle] {
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
            EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle + 1), None);
        }
    };
    ask();
    EXPECT_THAT(Opens(), ElementsAre("no such code set > UTF-16LE", "UTF-16LE > no such code set"));
    std::thread(ask).join();
    EXPECT_EQ(Opens().size(), 4u);
    EXPECT_THAT(Opened(), IsEmpty());
}

TEST(IConvDescriptors, StayTheSameInAnyOrderOfRequests) {
    const char* const names[] = {"ISO-8859-1", "ISO-8859-2", "ISO-8859-5", "ISO-8859-15", "no such code set", "UTF-8"};
    std::vector<iconv_t> expected;
    for (const char* name : names) {
        const IConvDesc_t handle = HandleOf("UTF-16LE", name);
        expected.push_back(VELSysIConvTSWrap::GetIConvDesc(handle));
        expected.push_back(VELSysIConvTSWrap::GetIConvDesc(handle + 1));
    }
    std::minstd_rand random(7);
    for (int i = 0; i < 10000; ++i) {
        const auto handle = static_cast<IConvDesc_t>(random() % expected.size());
        ASSERT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), expected[static_cast<std::size_t>(handle)]) << handle;
    }
    EXPECT_EQ(Opens().size(), 2 * std::size(names));
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(static_cast<IConvDesc_t>(expected.size())), None)
        << "the list has an end";
}

/// A pair of which one direction doesn't open.
class IConvHalfPair : public testing::TestWithParam<bool> {};

INSTANTIATE_TEST_SUITE_P(Directions, IConvHalfPair, testing::Bool(),
                         [](const auto& row) { return row.param ? "Forward" : "Backward"; });

TEST_P(IConvHalfPair, HasNoDescriptorAndNoneIsClosed) {
    const char* const names[] = {"ISO-8859-1", "UTF-16LE"};
    IConvCalls::Refuse(names[GetParam() ? 0 : 1], names[GetParam() ? 1 : 0]);
    const IConvDesc_t handle = HandleOf("UTF-16LE", "ISO-8859-1");
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
    EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle + 1), None);
    EXPECT_EQ(Opens().size(), 2u) << "both were tried, once";
    EXPECT_EQ(Opened().size(), 1u);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_THAT(IConvCalls::Closed(), IsEmpty());
}

namespace {

/// Runs a call with its first request failing, then with its second, until it needs no more.
/// @param check  Told the result of each run, and whether memory was short.
template <class Call, class Check>
void Sweep(const Call& call, const Check& check) {
    for (const auto extent : {HeapShortage::OnlyThatOne, HeapShortage::FromThatOneOn}) {
        for (int request = 1;; ++request) {
            ASSERT_LT(request, 100);
            bool hasStruck = false;
            decltype(call()) result;
            {
                const HeapShortage shortage(request, extent);
                result = call();
                hasStruck = HeapShortage::HasStruck();
            }
            check(result);
            if (!hasStruck) {
                break;
            }
        }
    }
}

} // namespace

TEST(IConvShortage, OfARegistrationLeavesTheRegistryAsItWas) {
    VELSysIConvTSWrap::sInitIConvTS(nullptr);
    std::string name = "set 0";
    IConvDesc_t expected = 0;
    IConvDesc_t handle = -77;
    int failures = 0;
    Sweep([&] { return VELSysIConvTSWrap::Open(name.c_str(), "B", handle); },
          [&](int status) {
              if (status == VEL::StatusOk) {
                  EXPECT_EQ(handle, expected);
                  expected += 2;
              } else {
                  ++failures;
                  EXPECT_EQ(status, static_cast<int>(0x80004005));
                  EXPECT_EQ(handle, -77);
              }
              name = "set " + std::to_string(expected);
              handle = -77;
          });
    EXPECT_EQ(failures, 6) << "two names and the entry";
    for (handle = 0; handle < expected; handle += 2) {
        EXPECT_EQ(HandleOf(("set " + std::to_string(handle)).c_str(), "B"), handle);
    }
}

TEST(IConvShortage, OfTheMutexRefusesTheRegistration) {
    IConvDesc_t handle = -77;
    {
        const HeapShortage shortage(1, HeapShortage::OnlyThatOne);
        EXPECT_EQ(VELSysIConvTSWrap::Open("A", "B", handle), static_cast<int>(0x80004005));
    }
    EXPECT_EQ(handle, -77);
    EXPECT_THAT(Companion(), IsEmpty());
    EXPECT_EQ(HandleOf("A", "B"), 0);
}

TEST(IConvShortage, OfTheQueueGivesNoDescriptorUntilThereIsOne) {
    IConvDesc_t handle = -77;
    {
        const HeapShortage shortage(2, HeapShortage::OnlyThatOne);
        EXPECT_EQ(VELSysIConvTSWrap::Open("UTF-16LE", "ISO-8859-1", handle), VEL::StatusOk);
    }
    {
        const HeapShortage shortage(4, HeapShortage::OnlyThatOne);
        EXPECT_EQ(VELSysIConvTSWrap::GetIConvDesc(handle), None);
    }
    EXPECT_THAT(Companion(), ElementsAre("QORMutex 0 1 0", "CreateEmptyQueue 0 0", "CreateEmptyQueue 0 0"));
    EXPECT_NE(VELSysIConvTSWrap::GetIConvDesc(handle), None);
}

TEST(IConvShortage, OfARequestGivesNoneAndTheNextOneTriesAgain) {
    HandleOf("UTF-16LE", "ISO-8859-1");
    HandleOf("UTF-16LE", "ISO-8859-2");
    IConvDesc_t handle = 0;
    int failures = 0;
    Sweep([&] { return VELSysIConvTSWrap::GetIConvDesc(handle); },
          [&](iconv_t descriptor) {
              if (descriptor != None) {
                  handle = 2;
                  return;
              }
              ++failures;
              EXPECT_EQ(Opened().size(), static_cast<std::size_t>(handle)) << "nothing was opened";
          });
    EXPECT_EQ(failures, 8) << "two names, the entry and its place on the queue";
    EXPECT_EQ(Opens().size(), 4u);
    VELSysIConvTSWrap::sDeinitIConvTS(0);
    EXPECT_EQ(IConvCalls::Closed(), Opened());
}
