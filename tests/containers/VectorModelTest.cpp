/// @file
/// Long random sequences of operations beside std::vector, compared after each of them.

#include "VectorInstances.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace VectorInstances;

/// A container and what it should be.
template <class Vector>
class Pair {
public:
    using Element = typename Vector::Element;

    explicit Pair(unsigned int seed) : _random(seed) {}

    void Step() {
        using Action = void (Pair::*)();
        static constexpr Action Actions[] = {
            &Pair::InsertOne,     &Pair::InsertOne,     &Pair::PutBack,      &Pair::PutBack,     &Pair::PutFront,
            &Pair::InsertOther,   &Pair::InsertRange,   &Pair::InsertBuffer, &Pair::InsertSelf,  &Pair::Remove,
            &Pair::Remove,        &Pair::Remove,        &Pair::RemoveRange,  &Pair::RemoveRange, &Pair::PopFront,
            &Pair::PopBack,       &Pair::Set,           &Pair::Get,          &Pair::Find,        &Pair::SetCapacity,
            &Pair::Assign,        &Pair::Copy,          &Pair::CopyRange,    &Pair::Clear,       &Pair::Iterate,
            &Pair::IterateInsert, &Pair::IterateRemove,
        };
        (this->*Actions[Number(0, static_cast<int>(std::size(Actions)) - 1)])();
        if (Size() > 200) {
            Check(_vector.RemoveRange(50, Size()), true);
            _model.resize(50);
        }
    }

    void ExpectEqual() const {
        ASSERT_EQ(Content(_vector), _model);
        ASSERT_EQ(CapacityOf(_vector), _capacity);
        ASSERT_EQ(_it.GetIndex(), _index);
        ASSERT_EQ(_it.IsBegin(), _index == 0);
        ASSERT_EQ(_it.IsLast(), _index == Size() - 1);
        ASSERT_EQ(_it.IsEnd(), _index < 0 || _index >= Size());
    }

private:
    int Number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(_random); }
    int Value() { return Number(0, 20); }
    int Size() const { return static_cast<int>(_model.size()); }
    int Place() { return Number(-2, Size() + 2); }
    bool IsPlace(int pos) const { return pos >= 0 && pos <= Size(); }
    bool IsIndex(int i) const { return i >= 0 && i < Size(); }
    static bool IsRange(int first, int end, int size) { return 0 <= first && first < end && end <= size; }
    static void Check(int status, bool isGood) { ASSERT_EQ(status, isGood ? Ok : Failure); }

    void GrowTo(int size) {
        if (_capacity < size) {
            _capacity = std::max(_capacity == 0 ? 4 : 2 * _capacity, size);
        }
    }
    void ModelInsert(int pos, const std::vector<int>& numbers) {
        GrowTo(Size() + static_cast<int>(numbers.size()));
        _model.insert(_model.begin() + pos, numbers.begin(), numbers.end());
    }
    std::vector<int> SomeNumbers() {
        std::vector<int> numbers(static_cast<std::size_t>(Number(0, 6)));
        std::ranges::generate(numbers, [this] { return Value(); });
        return numbers;
    }
    static Vector VectorOf(const std::vector<int>& numbers) {
        Vector vector;
        for (const int number : numbers) {
            vector.PutBack(Make<Vector>(number));
        }
        return vector;
    }

    void InsertOne() {
        const int pos = Place();
        const int value = Value();
        Check(_vector.Insert(pos, Make<Vector>(value)), IsPlace(pos));
        if (IsPlace(pos)) {
            ModelInsert(pos, {value});
        }
    }
    void PutBack() {
        const int own = Place();
        if (IsIndex(own)) {
            Check(_vector.PutBack(*_vector.GetAsPtr(own)), true);
            ModelInsert(Size(), {_model[static_cast<std::size_t>(own)]});
            return;
        }
        const int value = Value();
        Check(_vector.PutBack(Make<Vector>(value)), true);
        ModelInsert(Size(), {value});
    }
    void PutFront() {
        const std::vector<int> numbers = SomeNumbers();
        Check(_vector.PutFront(VectorOf(numbers)), true);
        ModelInsert(0, numbers);
    }
    void InsertOther() {
        const int pos = Place();
        const std::vector<int> numbers = SomeNumbers();
        Check(_vector.Insert(pos, VectorOf(numbers)), IsPlace(pos));
        if (IsPlace(pos)) {
            ModelInsert(pos, numbers);
        }
    }
    void InsertRange() {
        const int pos = Place();
        const std::vector<int> numbers = SomeNumbers();
        const int size = static_cast<int>(numbers.size());
        const int first = Number(-1, size + 1);
        const int end = Number(-1, size + 1);
        const bool isGood = IsPlace(pos) && IsRange(first, end, size);
        Check(_vector.Insert(pos, VectorOf(numbers), first, end), isGood);
        if (isGood) {
            ModelInsert(pos, {numbers.begin() + first, numbers.begin() + end});
        }
    }
    void InsertBuffer() {
        const int pos = Place();
        const std::vector<int> numbers = SomeNumbers();
        const Vector source = VectorOf(numbers);
        const int count = static_cast<int>(numbers.size());
        const bool isGood = IsPlace(pos) && count > 0;
        Check(_vector.Insert(pos, source.pT(0), count), isGood);
        if (isGood) {
            ModelInsert(pos, numbers);
        }
    }
    void InsertSelf() {
        const int pos = Place();
        const int first = Place();
        const int end = Place();
        const bool isGood = IsPlace(pos) && IsRange(first, end, Size());
        Check(_vector.Insert(pos, _vector, first, end), isGood);
        if (isGood) {
            ModelInsert(pos, {_model.begin() + first, _model.begin() + end});
        }
    }
    void Remove() {
        const int i = Place();
        Check(_vector.Remove(i), IsIndex(i));
        if (IsIndex(i)) {
            _model.erase(_model.begin() + i);
        }
    }
    void RemoveRange() {
        const int first = Place();
        const int end = first + Number(-1, 5);
        const bool isGood = IsRange(first, end, Size());
        Check(_vector.RemoveRange(first, end), isGood);
        if (isGood) {
            _model.erase(_model.begin() + first, _model.begin() + end);
        }
    }
    void PopFront() {
        auto out = Make<Vector>(99);
        const bool isGood = !_model.empty();
        Check(_vector.PopFront(out), isGood);
        ASSERT_EQ(NumberOf(out), isGood ? _model.front() : 99);
        if (isGood) {
            _model.erase(_model.begin());
        }
    }
    void PopBack() {
        auto out = Make<Vector>(99);
        const bool isGood = !_model.empty();
        Check(_vector.PopBack(out), isGood);
        ASSERT_EQ(NumberOf(out), isGood ? _model.back() : 99);
        if (isGood) {
            _model.pop_back();
        }
    }
    void Set() {
        const int i = Place();
        const int value = Value();
        Check(_vector.Set(i, Make<Vector>(value)), IsIndex(i));
        if (IsIndex(i)) {
            _model[static_cast<std::size_t>(i)] = value;
        }
    }
    void Get() {
        const int i = Place();
        auto out = Make<Vector>(99);
        Check(_vector.Get(i, out), IsIndex(i));
        ASSERT_EQ(NumberOf(out), IsIndex(i) ? _model[static_cast<std::size_t>(i)] : 99);
        ASSERT_EQ(_vector.GetAsPtr(i), IsIndex(i) ? _vector.pT(i) : nullptr);
    }
    void Find() {
        const int value = Value();
        const int start = Place();
        int expected = -1;
        if (IsIndex(start)) {
            const auto found = std::find(_model.begin() + start, _model.end(), value);
            expected = found != _model.end() ? static_cast<int>(found - _model.begin()) : -1;
        }
        ASSERT_EQ(_vector.Find(Make<Vector>(value), start), expected);
    }
    void SetCapacity() {
        const int n = Number(-1, 2 * Size());
        Check(_vector.SetCapacity(n), n >= Size());
        _capacity = n >= Size() ? n : _capacity;
    }
    void Assign() {
        const std::vector<int> numbers = SomeNumbers();
        _vector = VectorOf(numbers);
        GrowTo(static_cast<int>(numbers.size()));
        _model = numbers;
    }
    void Copy() {
        const Vector copy(_vector);
        ASSERT_TRUE(copy == _vector);
        ASSERT_EQ(CapacityOf(copy), _capacity);
    }
    void CopyRange() {
        const int first = Place();
        const int end = Place();
        const Vector copy(_vector, first, end);
        const bool isGood = IsRange(first, end, Size());
        ASSERT_EQ(copy.GetLength(), isGood ? end - first : 0);
        ASSERT_EQ(copy == _vector, copy.GetLength() == Size());
    }
    void Clear() {
        if (Number(0, 9) == 0) {
            _vector.Clear();
            _model.clear();
        }
    }
    void Iterate() {
        switch (Number(0, 3)) {
        case 0:
            _index = Place();
            _it = typename Vector::iterator(_vector, _index);
            break;
        case 1: {
            const bool isGood = _index >= -1 && _index < Size();
            Check(_it.Next(), isGood);
            _index += isGood ? 1 : 0;
            break;
        }
        case 2: {
            const bool isGood = _index >= 0 && _index <= Size();
            Check(_it.Prev(), isGood);
            _index -= isGood ? 1 : 0;
            break;
        }
        default: {
            const Element* const element = _it.GetAsPtrGoToNext();
            ASSERT_EQ(element, IsIndex(_index) ? _vector.pT(_index) : nullptr);
            _index += IsIndex(_index) ? 1 : 0;
        }
        }
    }
    void IterateInsert() {
        const std::vector<int> numbers = SomeNumbers();
        Check(_it.Insert(VectorOf(numbers)), IsPlace(_index));
        if (IsPlace(_index)) {
            ModelInsert(_index, numbers);
            _index += static_cast<int>(numbers.size());
        }
    }
    void IterateRemove() {
        const bool isForward = Number(0, 1) == 1;
        const bool isGood = IsIndex(_index);
        Check(isForward ? _it.RemoveGoToNext() : _it.RemoveGoToPrev(), isGood);
        if (isGood) {
            _model.erase(_model.begin() + _index);
            _index += isForward ? 1 : -1;
        }
    }

    std::mt19937 _random;
    Vector _vector;
    std::vector<int> _model;
    int _capacity = 0;
    typename Vector::iterator _it{_vector, 0};
    int _index = 0;
};

} // namespace

template <class Vector>
class VectorModel : public testing::Test {};
TYPED_TEST_SUITE(VectorModel, All);

TYPED_TEST(VectorModel, AgreesOverARandomSequence) {
    for (const unsigned int seed : {1u, 2u, 3u}) {
        Pair<TypeParam> pair(seed);
        for (int step = 0; step < 5'000; ++step) {
            pair.Step();
            pair.ExpectEqual();
            if (this->HasFatalFailure()) {
                FAIL() << "seed " << seed << ", step " << step;
            }
        }
    }
}
