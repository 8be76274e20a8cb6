#include "VELSysTSVector.h"

#include "TestSupport.h"
#include "VirtualTable.h"

#include <gtest/gtest.h>
#include <memory>
#include <new>

namespace {

/// Makes vectors of one size.
class VectorFactory : public ObjectFactory<VELSysTSVector> {
public:
    explicit VectorFactory(int size) : _size(size) {}

    VELSysTSVector* CreateObject() override {
        ++made;
        return refuses ? nullptr : new (std::nothrow) VELSysTSVector(_size);
    }

    std::atomic<int> made{0};
    bool refuses = false;

private:
    int _size;
};

TEST(ObjectFactoryTest, TheCreationFollowsTheDestructors) {
    EXPECT_EQ(VirtualTable::SlotOf(&ObjectFactory<VELSysTSVector>::CreateObject), 2);
}

TEST(ObjectFactoryTest, TheFirstNeedMakesAndPublishesTheObject) {
    VectorFactory factory(5);
    VELSysTSVector* shared = nullptr;
    VELSysTSVector* const made = factory.GetOrCreate(shared);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(shared, made);
    EXPECT_EQ(made->GetSize(), 5);
    EXPECT_EQ(factory.GetOrCreate(shared), made);
    EXPECT_EQ(factory.made, 1);
    delete shared;
}

TEST(ObjectFactoryTest, AnObjectThatCannotBeMadeGivesNullAndIsTriedAgain) {
    VectorFactory factory(5);
    VELSysTSVector* shared = nullptr;
    factory.refuses = true;
    EXPECT_EQ(factory.GetOrCreate(shared), nullptr);
    EXPECT_EQ(shared, nullptr);
    factory.refuses = false;
    EXPECT_NE(factory.GetOrCreate(shared), nullptr);
    delete shared;
}

TEST(ObjectFactoryTest, ThreadsThatRaceGetOneObject) {
    for (int round = 0; round < 100; ++round) {
        VectorFactory factory(5);
        VELSysTSVector* shared = nullptr;
        VELSysTSVector* seen[4] = {};
        RunAtOnce(4, [&](int number) {
            seen[number] = factory.GetOrCreate(shared);
            EXPECT_EQ(seen[number]->GetSize(), 5);
        });
        for (VELSysTSVector* const vector : seen) {
            EXPECT_EQ(vector, shared);
        }
        delete shared;
    }
}

} // namespace
