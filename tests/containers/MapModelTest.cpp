/// @file
/// Long random sequences of operations on the maps beside their plain definitions, compared after each of them.

#include "MapInstances.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace MapInstances;

constexpr int KeyCount = 200;

/// A walk by each way of reading must give the same as `expected`, with the same states on the way.
template <class Map>
void ExpectWalks(Map& map, const Entries& expected) {
    ASSERT_EQ(Content(map), expected);
    auto it = map.Begin();
    auto byEntry = map.cBegin();
    auto byKey = map.cBegin();
    auto byValue = map.Begin();
    for (const auto& [key, value] : expected) {
        ASSERT_FALSE(it.IsEnd());
        auto outKey = Key<Map>(0);
        auto outValue = Value<Map>(0);
        ASSERT_EQ(it.Get(outKey, outValue), Ok);
        ASSERT_EQ(NumberOf(outKey), key);
        ASSERT_EQ(NumberOf(outValue), value);
        ASSERT_TRUE(it == byEntry);
        const auto* const entry = byEntry.GetEntryAsPtrGoToNext();
        ASSERT_EQ(static_cast<const void*>(entry), it.GetKeyAsPtr());
        ASSERT_EQ(&entry->value, it.GetValAsPtr());
        ASSERT_EQ(&entry->key, byKey.GetKeyAsPtrGoToNext());
        ASSERT_EQ(&entry->value, byValue.GetValAsPtrGoToNext());
        ASSERT_EQ(map.GetAsPtr(entry->key), &entry->value);
        ASSERT_EQ(it.Next(), Ok);
    }
    ASSERT_TRUE(it.IsEnd());
    ASSERT_EQ(it.Next(), Failure);
    ASSERT_TRUE(it == byEntry);
    ASSERT_EQ(byEntry.GetEntryAsPtrGoToNext(), nullptr);
    ASSERT_EQ(byKey.GetKeyAsPtrGoToNext(), nullptr);
    ASSERT_EQ(byValue.GetValAsPtrGoToNext(), nullptr);
}

template <class Map>
class Pair {
public:
    explicit Pair(unsigned int seed) : _random(seed) {}

    void Step() {
        using Action = void (Pair::*)();
        static constexpr Action Actions[] = {
            &Pair::Put,    &Pair::Put,          &Pair::Put,      &Pair::Put,    &Pair::Put,       &Pair::Put,
            &Pair::Get,    &Pair::Remove,       &Pair::Remove,   &Pair::ReHash, &Pair::Clear,     &Pair::Copy,
            &Pair::Assign, &Pair::RemoveValues, &Pair::PutOther, &Pair::Fill,   &Pair::SetValues,
        };
        (this->*Actions[Number(0, static_cast<int>(std::size(Actions)) - 1)])();
    }
    void ExpectEqual() {
        ASSERT_EQ(_map.GetLength(), _model.Length());
        ASSERT_EQ(_map.IsEmpty(), _model.Length() == 0);
        ASSERT_EQ(TableLength(_map), _model.TableLength());
        ASSERT_EQ(Fields(_map).reciprocal, _model.Reciprocal());
        ExpectWalks(_map, _model.Order());
    }

private:
    int Number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(_random); }
    float LoadFactor() {
        constexpr float Factors[] = {0.75F, 0.1F, 0.09F, 1.0F, 3.0F, 100.0F, 100.1F, -1.0F, 0.3F};
        return Factors[Number(0, static_cast<int>(std::size(Factors)) - 1)];
    }
    Map Other(HashModel<Map>& model) {
        const int minEntries = Number(-1, 30);
        const float loadFactor = LoadFactor();
        Map other(minEntries, loadFactor);
        model.Init(minEntries, loadFactor);
        for (int left = Number(0, 20); left > 0; --left) {
            const int key = Number(0, KeyCount);
            PutNumber(other, key, left);
            model.Put(key, left);
        }
        return other;
    }

    void Put() {
        const int key = Number(0, KeyCount);
        const int value = Number(0, 20);
        PutNumber(_map, key, value);
        _model.Put(key, value);
    }
    void Get() {
        const int key = Number(0, KeyCount);
        auto out = Value<Map>(77);
        const int* const expected = _model.Get(key);
        ASSERT_EQ(_map.Get(Key<Map>(key), out), expected != nullptr ? Ok : Failure);
        ASSERT_EQ(NumberOf(out), expected != nullptr ? *expected : 77);
        ASSERT_EQ(_map.Find(Key<Map>(key)), expected != nullptr);
        ASSERT_EQ(_map.GetAsPtr(Key<Map>(key)) != nullptr, expected != nullptr);
        const int n = Number(-5, 1000);
        ASSERT_EQ(_map.GetMinimumTableLength(n), _model.MinimumTableLength(n));
    }
    void Remove() {
        const int key = Number(0, KeyCount);
        _map.Remove(Key<Map>(key));
        _model.Remove(key);
    }
    void RemoveValues() {
        const int value = Number(0, 20);
        _map.RemoveValues(Value<Map>(value));
        _model.RemoveValues(value);
    }
    void ReHash() {
        const int minEntries = Number(-1, 100);
        const float loadFactor = LoadFactor();
        _map.ReHash(minEntries, loadFactor);
        _model.ReHash(minEntries, loadFactor);
    }
    void Clear() {
        if (Number(0, 5) == 0) {
            const int minEntries = Number(-1, 30);
            const float loadFactor = LoadFactor();
            _map.Clear(minEntries, loadFactor);
            _model.Init(minEntries, loadFactor);
        }
    }
    void Copy() {
        Map copy(_map);
        ASSERT_EQ(Content(copy), _model.Order());
        ASSERT_EQ(TableLength(copy), _model.TableLength());
        ASSERT_TRUE(copy == _map);
        const int minEntries = Number(-1, 100);
        const float loadFactor = LoadFactor();
        Map other(_map, minEntries, loadFactor);
        ASSERT_EQ(Content(other), HashModel<Map>(_model, minEntries, loadFactor).Order());
        ASSERT_TRUE(other == _map);
        const Map third(_map, minEntries);
        ASSERT_EQ(Content(third), HashModel<Map>(_model, minEntries, 1.0F / _model.Reciprocal()).Order());
    }
    void Assign() {
        HashModel<Map> model;
        const Map other = Other(model);
        if (Number(0, 3) == 0) {
            _map = other;
            _model = model;
        }
    }
    void PutOther() {
        HashModel<Map> model;
        const Map other = Other(model);
        _map.Put(other);
        _model.Put(model);
        _map.Put(_map);
    }
    void Fill() {
        Map empty(Number(1, 20), 0.5F);
        HashModel<Map> model(TableLength(empty) / 2, 0.5F);
        ASSERT_EQ(model.TableLength(), TableLength(empty));
        empty.Fill(_map);
        model.Fill(_model);
        ASSERT_EQ(Content(empty), model.Order());
        ASSERT_EQ(empty.GetLength(), _model.Length());
    }
    void SetValues() {
        for (auto it = _map.Begin(); !it.IsEnd(); it.Next()) {
            const int value = Number(0, 20);
            auto key = Key<Map>(0);
            ASSERT_EQ(it.GetKey(key), Ok);
            ASSERT_EQ(it.SetVal(Value<Map>(value)), Ok);
            _model.Put(NumberOf(key), value);
        }
    }

    std::mt19937 _random;
    Map _map;
    HashModel<Map> _model;
};

template <class Map>
class LinkedPair {
public:
    explicit LinkedPair(unsigned int seed) : _random(seed) {}

    void Step() {
        const int key = Number(0, 40);
        const int value = Number(0, 10);
        switch (Number(0, 12)) {
        case 0:
            _map.Remove(Key<Map>(key));
            _model.Remove(key);
            break;
        case 1:
            _map.RemoveValues(Value<Map>(value));
            _model.RemoveValues(value);
            break;
        case 2:
            if (value == 0) {
                _map.Clear(12, 0.75F);
                _model.entries.clear();
            }
            break;
        case 3: {
            const Map copy(_map, 5, 0.1F);
            _map = copy;
            _map.Put(copy);
            break;
        }
        case 4: {
            Map other(3);
            PutNumber(other, key, value);
            PutNumber(other, value, key);
            _map.Put(other);
            _model.Put(key, NumberOf(*other.GetAsPtr(Key<Map>(key))));
            _model.Put(value, NumberOf(*other.GetAsPtr(Key<Map>(value))));
            break;
        }
        case 5: {
            auto out = Value<Map>(77);
            const auto it = _model.Find(key);
            const bool isThere = it != _model.entries.end();
            ASSERT_EQ(_map.Get(Key<Map>(key), out), isThere ? Ok : Failure);
            ASSERT_EQ(NumberOf(out), isThere ? it->second : 77);
            ASSERT_EQ(_map.FindNode(Key<Map>(key)) != nullptr, isThere);
            _map.ReHash(1000, 0.5F);
            break;
        }
        default:
            PutNumber(_map, key, value);
            _model.Put(key, value);
        }
    }
    void ExpectEqual() {
        ASSERT_EQ(_map.GetLength(), static_cast<int>(_model.entries.size()));
        ASSERT_EQ(_map.IsEmpty(), _model.entries.empty());
        ExpectWalks(_map, _model.entries);
    }

private:
    int Number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(_random); }

    std::mt19937 _random;
    Map _map;
    LinkedModel _model;
};

} // namespace

template <class Map>
class HashMapModel : public testing::Test {};
TYPED_TEST_SUITE(HashMapModel, HashMaps);

TYPED_TEST(HashMapModel, AgreesOverARandomSequence) {
    for (const unsigned int seed : {1u, 2u, 3u}) {
        Pair<TypeParam> pair(seed);
        for (int step = 0; step < 1'500; ++step) {
            pair.Step();
            pair.ExpectEqual();
            if (this->HasFatalFailure()) {
                FAIL() << "seed " << seed << ", step " << step;
            }
        }
    }
}

template <class Map>
class LinkedMapModel : public testing::Test {};
TYPED_TEST_SUITE(LinkedMapModel, LinkedMaps);

TYPED_TEST(LinkedMapModel, AgreesOverARandomSequence) {
    for (const unsigned int seed : {1u, 2u}) {
        LinkedPair<TypeParam> pair(seed);
        for (int step = 0; step < 3'000; ++step) {
            pair.Step();
            pair.ExpectEqual();
            if (this->HasFatalFailure()) {
                FAIL() << "seed " << seed << ", step " << step;
            }
        }
    }
}
