/// @file
/// The linked engines: what all of them do, and the flag of the one that can be frozen.

#include "QORSysTSLinkedAbstractCtnr.h"
#include "QORSysTSLinkedAbstractCtnrFC.h"
#include "QORSysTSLinkedAbstractCtnrFTS.h"

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <type_traits>
#include <vector>

namespace {

constexpr int Ok = 0;
constexpr int Failure = static_cast<int>(0x80004005u);
constexpr int Frozen = static_cast<int>(0x80070057u);

/// A chain of `count` nodes, which the test owns.
template <class Engine>
class Chain {
public:
    using Node = typename Engine::Node;

    explicit Chain(int count) : nodes(static_cast<std::size_t>(count)) {
        for (Node& node : nodes) {
            engine.InsertNodeBetween(engine._chain.last, node, nullptr);
        }
    }
    Node* At(int i) { return &nodes[static_cast<std::size_t>(i)]; }

    /// The positions that the nodes of the chain had at first, when all of its links agree.
    std::vector<int> Order() {
        std::vector<int> order;
        const Node* previous = nullptr;
        for (const Node* node = engine._chain.first; node != nullptr; node = node->next) {
            EXPECT_EQ(node->previous, previous);
            order.push_back(static_cast<int>(node - nodes.data()));
            previous = node;
        }
        EXPECT_EQ(engine._chain.last, previous);
        EXPECT_EQ(engine._chain.count, static_cast<int>(order.size()));
        return order;
    }

    std::vector<Node> nodes;
    Engine engine;
};

using Order = std::vector<int>;

} // namespace

template <class Engine>
class LinkedEngines : public testing::Test {};
using Engines = testing::Types<QORSysTSLinkedAbstractCtnr, QORSysTSLinkedAbstractCtnrFC, QORSysTSLinkedAbstractCtnrFTS>;
TYPED_TEST_SUITE(LinkedEngines, Engines);

TYPED_TEST(LinkedEngines, StartEmpty) {
    alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
    std::memset(storage, 0xAA, sizeof storage);
    auto* const engine = new (storage) TypeParam();
    EXPECT_EQ(engine->_chain.count, 0);
    EXPECT_EQ(engine->_chain.first, nullptr);
    EXPECT_EQ(engine->_chain.last, nullptr);
    EXPECT_EQ(engine->GetNode(0), nullptr);
    EXPECT_EQ(engine->PopNode(0), nullptr);
    EXPECT_EQ(engine->PopFirstNode(), nullptr);
    EXPECT_EQ(engine->PopLastNode(), nullptr);
    engine->~TypeParam();
}

TYPED_TEST(LinkedEngines, HaveNoVirtualTable) {
    EXPECT_FALSE(std::is_polymorphic_v<TypeParam>);
}

TYPED_TEST(LinkedEngines, KeepTheOrderOfTheirFields) {
    Chain<TypeParam> chain(2);
    struct {
        int count;
        const void* first;
        const void* last;
    } fields;
    std::memcpy(&fields, reinterpret_cast<const char*>(&chain.engine), sizeof fields);
    EXPECT_EQ(fields.count, 2);
    EXPECT_EQ(fields.first, chain.At(0));
    EXPECT_EQ(fields.last, chain.At(1));
    const void* links[2];
    std::memcpy(links, chain.At(0), sizeof links);
    EXPECT_EQ(links[0], chain.At(1)) << "the next node first";
    EXPECT_EQ(links[1], nullptr);
}

TYPED_TEST(LinkedEngines, LinkNodesBetweenNeighbours) {
    Chain<TypeParam> chain(3);
    typename TypeParam::Node front;
    typename TypeParam::Node middle;
    chain.engine.InsertNodeBetween(nullptr, front, chain.At(0));
    EXPECT_EQ(chain.engine._chain.first, &front);
    EXPECT_EQ(front.previous, nullptr);
    EXPECT_EQ(chain.engine.RemoveNode(front), &front);
    chain.engine.InsertNodeBetween(chain.At(0), middle, chain.At(1));
    EXPECT_EQ(chain.engine._chain.count, 4);
    EXPECT_EQ(chain.engine.GetNode(1), &middle);
    EXPECT_EQ(middle.previous, chain.At(0));
    EXPECT_EQ(middle.next, chain.At(1));
    EXPECT_EQ(chain.engine.PopNode(1), &middle);
    EXPECT_EQ(chain.Order(), (Order{0, 1, 2}));
}

TYPED_TEST(LinkedEngines, LeaveTheLinksOfARemovedNode) {
    Chain<TypeParam> chain(3);
    EXPECT_EQ(chain.engine.RemoveNode(*chain.At(1)), chain.At(1));
    EXPECT_EQ(chain.At(1)->next, chain.At(2));
    EXPECT_EQ(chain.At(1)->previous, chain.At(0));
    EXPECT_EQ(chain.Order(), (Order{0, 2}));
}

TYPED_TEST(LinkedEngines, AnswerTheNeighbourOfARemovedNode) {
    Chain<TypeParam> chain(5);
    EXPECT_EQ(chain.engine.RemoveNodeGetNext(*chain.At(1)), chain.At(2));
    EXPECT_EQ(chain.engine.RemoveNodeGetNext(*chain.At(4)), nullptr);
    EXPECT_EQ(chain.engine.RemoveNodeGetPrev(*chain.At(3)), chain.At(2));
    EXPECT_EQ(chain.engine.RemoveNodeGetPrev(*chain.At(0)), nullptr);
    EXPECT_EQ(chain.Order(), Order{2});
    EXPECT_EQ(chain.engine.RemoveNodeGetNext(*chain.At(2)), nullptr);
    EXPECT_EQ(chain.Order(), Order{}) << "nothing is left of the last one";
}

TYPED_TEST(LinkedEngines, FindNodesByTheirPosition) {
    Chain<TypeParam> chain(3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(chain.engine.GetNode(i), chain.At(i));
    }
    for (const int i : {-1, -2, 3, 4, INT_MAX, INT_MIN}) {
        EXPECT_EQ(chain.engine.GetNode(i), nullptr) << i;
        EXPECT_EQ(chain.engine.PopNode(i), nullptr) << i;
    }
    EXPECT_EQ(chain.Order(), (Order{0, 1, 2}));
}

TYPED_TEST(LinkedEngines, TakeNodesOutAtTheEnds) {
    Chain<TypeParam> chain(4);
    EXPECT_EQ(chain.engine.PopFirstNode(), chain.At(0));
    EXPECT_EQ(chain.engine.PopLastNode(), chain.At(3));
    EXPECT_EQ(chain.Order(), (Order{1, 2}));
    EXPECT_EQ(chain.engine.PopFirstNode(), chain.At(1));
    EXPECT_EQ(chain.engine.PopFirstNode(), chain.At(2));
    EXPECT_EQ(chain.engine.PopFirstNode(), nullptr);
    EXPECT_EQ(chain.Order(), Order{});
}

TYPED_TEST(LinkedEngines, FindRangesOfNodes) {
    Chain<TypeParam> chain(4);
    typename TypeParam::Node* first = nullptr;
    typename TypeParam::Node* end = nullptr;
    EXPECT_EQ(chain.engine.GetNodeRange(1, 3, first, end), Ok);
    EXPECT_EQ(first, chain.At(1));
    EXPECT_EQ(end, chain.At(3));
    EXPECT_EQ(chain.engine.GetNodeRange(0, 4, first, end), Ok);
    EXPECT_EQ(first, chain.At(0));
    EXPECT_EQ(end, nullptr) << "up to the end of the chain";
}

TYPED_TEST(LinkedEngines, RefuseRangesInTheWrongOrderAtOnce) {
    Chain<TypeParam> chain(4);
    typename TypeParam::Node mark;
    struct Row {
        int first;
        int end;
    };
    for (const auto& [from, to] :
         {Row{2, 2}, Row{2, 1}, Row{0, INT_MIN}, Row{INT_MAX, INT_MIN}, Row{INT_MIN, INT_MIN}}) {
        typename TypeParam::Node* first = &mark;
        typename TypeParam::Node* end = &mark;
        EXPECT_EQ(chain.engine.GetNodeRange(from, to, first, end), Failure) << from << ' ' << to;
        EXPECT_EQ(first, &mark);
        EXPECT_EQ(end, &mark);
    }
}

TYPED_TEST(LinkedEngines, WriteTheFirstNodeOfARangeThatGoesTooFar) {
    Chain<TypeParam> chain(4);
    typename TypeParam::Node mark;
    struct Row {
        int first;
        int end;
        bool hasFirst;
    };
    for (const auto& [from, to, hasFirst] :
         {Row{1, 5, true}, Row{0, INT_MAX, true}, Row{-1, 2, false}, Row{4, 5, false}, Row{INT_MIN, INT_MAX, false}}) {
        typename TypeParam::Node* first = &mark;
        typename TypeParam::Node* end = &mark;
        EXPECT_EQ(chain.engine.GetNodeRange(from, to, first, end), Failure) << from << ' ' << to;
        EXPECT_EQ(first, hasFirst ? chain.At(from) : nullptr);
        EXPECT_EQ(end, &mark);
    }
}

TYPED_TEST(LinkedEngines, InitForgetsNodesWithoutTouchingThem) {
    Chain<TypeParam> chain(3);
    chain.engine.Init();
    EXPECT_EQ(chain.engine._chain.count, 0);
    EXPECT_EQ(chain.engine._chain.first, nullptr);
    EXPECT_EQ(chain.engine._chain.last, nullptr);
    EXPECT_EQ(chain.At(0)->next, chain.At(1));
    EXPECT_EQ(chain.At(2)->previous, chain.At(1));
}

TYPED_TEST(LinkedEngines, SurviveANodeThatTakesThePlaceOfAll) {
    Chain<TypeParam> chain(3);
    typename TypeParam::Node alone;
    chain.engine.InsertNodeBetween(nullptr, alone, nullptr);
    EXPECT_EQ(chain.engine.GetNode(0), &alone);
    EXPECT_EQ(chain.engine.GetNode(1), nullptr) << "no longer linked";
    EXPECT_EQ(chain.engine.PopFirstNode(), &alone);
    EXPECT_EQ(chain.engine.PopFirstNode(), nullptr);
    EXPECT_EQ(chain.engine.PopLastNode(), nullptr);
}

// The flag.

TEST(FreezableLinkedEngine, RefusesAllOperationsWhileFrozen) {
    Chain<QORSysTSLinkedAbstractCtnrFC> chain(3);
    auto& engine = chain.engine;
    engine.FreezeContent();
    QORSysTSLinkedAbstractCtnrFC::Node node{};
    engine.InsertNodeBetween(nullptr, node, chain.At(0));
    EXPECT_EQ(node.next, nullptr);
    EXPECT_EQ(engine.RemoveNode(*chain.At(1)), nullptr);
    EXPECT_EQ(engine.RemoveNodeGetNext(*chain.At(1)), nullptr);
    EXPECT_EQ(engine.RemoveNodeGetPrev(*chain.At(1)), nullptr);
    EXPECT_EQ(engine.GetNode(0), nullptr);
    EXPECT_EQ(engine.PopNode(0), nullptr);
    EXPECT_EQ(engine.PopFirstNode(), nullptr);
    EXPECT_EQ(engine.PopLastNode(), nullptr);
    EXPECT_EQ(chain.Order(), (Order{0, 1, 2}));
}

TEST(FreezableLinkedEngine, AnswersThatItIsFrozenBeforeAllElse) {
    Chain<QORSysTSLinkedAbstractCtnrFC> chain(3);
    chain.engine.FreezeContent();
    auto* first = chain.At(2);
    auto* end = chain.At(2);
    for (const int to : {0, 1, 3, 4}) {
        EXPECT_EQ(chain.engine.GetNodeRange(0, to, first, end), Frozen) << to;
    }
    EXPECT_EQ(first, chain.At(2));
    EXPECT_EQ(end, chain.At(2));
}

TEST(FreezableLinkedEngine, NeedsOneUnfreezeOnly) {
    Chain<QORSysTSLinkedAbstractCtnrFC> chain(3);
    chain.engine.FreezeContent();
    chain.engine.FreezeContent();
    chain.engine.UnFreezeContent();
    EXPECT_EQ(chain.engine.GetNode(0), chain.At(0));
    chain.engine.UnFreezeContent();
    EXPECT_EQ(chain.engine.PopLastNode(), chain.At(2));
}

TEST(FreezableLinkedEngine, InitAndTheConstructorClearTheFlag) {
    Chain<QORSysTSLinkedAbstractCtnrFC> chain(3);
    EXPECT_EQ(chain.engine._frozen, 0);
    chain.engine.FreezeContent();
    EXPECT_EQ(chain.engine._frozen, 1);
    chain.engine.Init();
    EXPECT_EQ(chain.engine._frozen, 0);
    EXPECT_EQ(chain.engine._chain.count, 0) << "although it was frozen";
    alignas(QORSysTSLinkedAbstractCtnrFC) unsigned char storage[sizeof(QORSysTSLinkedAbstractCtnrFC)];
    std::memset(storage, 0xAA, sizeof storage);
    EXPECT_EQ((new (storage) QORSysTSLinkedAbstractCtnrFC())->_frozen, 0);
}
