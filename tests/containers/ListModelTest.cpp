/// @file
/// Long random sequences of operations beside std::list, compared after each of them.

#include "ListInstances.h"

#include <gtest/gtest.h>
#include <iterator>
#include <list>
#include <random>

namespace {

using namespace ListInstances;

/// A list and what it should be.
template <class List>
class Pair {
public:
    using Element = typename List::Element;
    using Model = std::list<int>;

    explicit Pair(unsigned int seed) : _random(seed) {}

    void Step() {
        using Action = void (Pair::*)();
        static constexpr Action Actions[] = {
            &Pair::InsertOne,   &Pair::InsertOne,   &Pair::PutBack,       &Pair::PutFront,      &Pair::InsertOther,
            &Pair::InsertRange, &Pair::InsertSelf,  &Pair::InsertBuffer,  &Pair::Remove,        &Pair::RemoveRange,
            &Pair::PopFront,    &Pair::PopBack,     &Pair::Set,           &Pair::Get,           &Pair::Find,
            &Pair::Assign,      &Pair::CopyRange,   &Pair::Clear,         &Pair::StartIterator, &Pair::IterateNext,
            &Pair::IterateNext, &Pair::IteratePrev, &Pair::IterateAt,     &Pair::IterateInsert, &Pair::IterateInsert,
            &Pair::IterateSet,  &Pair::IterateNext, &Pair::IterateRemove, &Pair::IterateRemove, &Pair::IterateRemove,
        };
        (this->*Actions[Number(0, static_cast<int>(std::size(Actions)) - 1)])();
        if (Size() > 100) {
            StartIterator();
            Check(_list.RemoveRange(30, Size()), true);
            _model.resize(30);
            Reset();
        }
    }

    void ExpectEqual() const {
        ASSERT_EQ(Content(_list), std::vector<int>(_model.begin(), _model.end()));
        ASSERT_EQ(_it.GetIndex(), _index);
        ASSERT_EQ(_it.IsBegin(), _index == 0);
        ASSERT_EQ(_it.IsLast(), _hasList && _index == Size() - 1);
        ASSERT_EQ(_it.IsEnd(), !HasNode());
        ASSERT_EQ(_it.GetAsConstPtr(), HasNode() ? &NodeAt(_list, Position())->element : nullptr);
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
    bool HasNode() const { return _node != _model.end(); }
    /// Where the iterator's node is in truth.
    int Position() const { return static_cast<int>(std::distance(_model.begin(), Model::const_iterator(_node))); }
    Model::iterator At(int i) { return std::next(_model.begin(), i); }

    std::vector<int> SomeNumbers() {
        std::vector<int> numbers(static_cast<std::size_t>(Number(0, 5)));
        std::ranges::generate(numbers, [this] { return Value(); });
        return numbers;
    }
    void ModelInsert(int pos, const std::vector<int>& numbers) {
        _model.insert(At(pos), numbers.begin(), numbers.end());
    }
    /// An iterator on a node that goes would dangle.
    void LeaveNodes(int first, int end) {
        if (HasNode() && Position() >= first && Position() < end) {
            Reset();
        }
    }
    void Reset() {
        _it = typename List::iterator();
        _node = _model.end();
        _index = -2;
        _hasList = false;
    }

    void InsertOne() {
        const int pos = Place();
        const int value = Value();
        Check(_list.Insert(pos, Make<List>(value)), IsPlace(pos));
        if (IsPlace(pos)) {
            ModelInsert(pos, {value});
        }
    }
    void PutBack() {
        const int own = Place();
        if (IsIndex(own)) {
            _list.PutBack(*_list.GetAsPtr(own));
            _model.push_back(*At(own));
            return;
        }
        const std::vector<int> numbers = SomeNumbers();
        _list.PutBack(ListOf<List>(numbers));
        ModelInsert(Size(), numbers);
    }
    void PutFront() {
        const std::vector<int> numbers = SomeNumbers();
        _list.PutFront(ListOf<List>(numbers));
        ModelInsert(0, numbers);
    }
    void InsertOther() {
        const int pos = Place();
        const std::vector<int> numbers = SomeNumbers();
        Check(_list.Insert(pos, ListOf<List>(numbers)), IsPlace(pos));
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
        Check(_list.Insert(pos, ListOf<List>(numbers), first, end), isGood);
        if (isGood) {
            ModelInsert(pos, {numbers.begin() + first, numbers.begin() + end});
        }
    }
    void InsertSelf() {
        const int pos = Place();
        const int first = Place();
        const int end = Place();
        const bool isGood = IsPlace(pos) && IsRange(first, end, Size());
        Check(_list.Insert(pos, _list, first, end), isGood);
        if (isGood) {
            ModelInsert(pos, {At(first), At(end)});
        }
    }
    void InsertBuffer() {
        const int pos = Place();
        const std::vector<int> numbers = SomeNumbers();
        std::vector<Element> buffer;
        for (const int number : numbers) {
            buffer.push_back(Make<List>(number));
        }
        const bool isGood = IsPlace(pos) && !numbers.empty();
        Check(_list.Insert(pos, buffer.data(), static_cast<int>(buffer.size())), isGood);
        if (isGood) {
            ModelInsert(pos, numbers);
        }
    }
    void Remove() {
        const int i = Place();
        LeaveNodes(i, i + 1);
        Check(_list.Remove(i), IsIndex(i));
        if (IsIndex(i)) {
            _model.erase(At(i));
        }
    }
    void RemoveRange() {
        const int first = Place();
        const int end = first + Number(-1, 5);
        const bool isGood = IsRange(first, end, Size());
        if (isGood) {
            LeaveNodes(first, end);
        }
        Check(_list.RemoveRange(first, end), isGood);
        if (isGood) {
            _model.erase(At(first), At(end));
        }
    }
    void PopFront() {
        auto out = Make<List>(99);
        const bool isGood = !_model.empty();
        LeaveNodes(0, 1);
        Check(_list.PopFront(out), isGood);
        ASSERT_EQ(NumberOf(out), isGood ? _model.front() : 99);
        if (isGood) {
            _model.pop_front();
        }
    }
    void PopBack() {
        auto out = Make<List>(99);
        const bool isGood = !_model.empty();
        LeaveNodes(Size() - 1, Size());
        Check(_list.PopBack(out), isGood);
        ASSERT_EQ(NumberOf(out), isGood ? _model.back() : 99);
        if (isGood) {
            _model.pop_back();
        }
    }
    void Set() {
        const int i = Place();
        const int value = Value();
        Check(_list.Set(i, Make<List>(value)), IsIndex(i));
        if (IsIndex(i)) {
            *At(i) = value;
        }
    }
    void Get() {
        const int i = Place();
        auto out = Make<List>(99);
        Check(_list.Get(i, out), IsIndex(i));
        ASSERT_EQ(NumberOf(out), IsIndex(i) ? *At(i) : 99);
        ASSERT_EQ(_list.GetAsPtr(i), IsIndex(i) ? &NodeAt(_list, i)->element : nullptr);
    }
    void Find() {
        const int value = Value();
        const int start = Place();
        int expected = -1;
        if (IsIndex(start)) {
            const auto found = std::find(At(start), _model.end(), value);
            expected = found != _model.end() ? static_cast<int>(std::distance(_model.begin(), found)) : -1;
        }
        ASSERT_EQ(_list.Find(Make<List>(value), start), expected);
    }
    void Assign() {
        if (Number(0, 4) == 0) {
            const std::vector<int> numbers = SomeNumbers();
            LeaveNodes(0, Size());
            _list = ListOf<List>(numbers);
            _model.assign(numbers.begin(), numbers.end());
            Reset();
        }
    }
    void CopyRange() {
        const int first = Place();
        const int end = Place();
        const List copy(_list, first, end);
        const bool isGood = IsRange(first, end, Size());
        ASSERT_EQ(copy.GetLength(), isGood ? end - first : 0);
        ASSERT_EQ(copy == _list, copy.GetLength() == Size());
        ASSERT_TRUE(List(_list) == _list);
    }
    void Clear() {
        if (Number(0, 9) == 0) {
            _list.Clear();
            _model.clear();
            Reset();
        }
    }
    void StartIterator() {
        const bool atFirst = Number(0, 1) == 0;
        _it = atFirst ? _list.Begin() : _list.Last();
        _hasList = true;
        if (_model.empty()) {
            _node = _model.end();
            _index = -2;
        } else {
            _node = At(atFirst ? 0 : Size() - 1);
            _index = atFirst ? 0 : Size() - 1;
        }
    }
    void ModelPrevious() {
        _node = _node == _model.begin() ? _model.end() : std::prev(_node);
        --_index;
    }
    void IterateNext() {
        if (HasNode()) {
            Check(_it.Next(), true);
            ++_node;
            ++_index;
            return;
        }
        const bool isGood = _hasList && _index == -1;
        Check(_it.Next(), isGood);
        _node = isGood ? _model.begin() : _node;
    }
    void IteratePrev() {
        if (HasNode()) {
            Check(_it.Prev(), true);
            ModelPrevious();
            return;
        }
        const bool isGood = _hasList && _index == Size();
        Check(_it.Prev(), isGood);
        _node = isGood && Size() > 0 ? std::prev(_model.end()) : _node;
    }
    void IterateAt() {
        const bool forward = Number(0, 1) == 0;
        const Element* const element = forward ? _it.GetAsPtrGoToNext() : _it.GetAsPtrGoToPrev();
        ASSERT_EQ(element != nullptr, HasNode());
        if (!HasNode()) {
            return;
        }
        ASSERT_EQ(NumberOf(*element), *_node);
        if (forward) {
            ++_node;
            ++_index;
        } else {
            ModelPrevious();
        }
    }
    void IterateInsert() {
        const std::vector<int> numbers = Number(0, 1) == 0 ? SomeNumbers() : std::vector<int>{Value()};
        const bool appends = _hasList && _index == Size();
        const bool isGood = appends || HasNode();
        Check(numbers.size() == 1 ? _it.Insert(Make<List>(numbers[0])) : _it.Insert(ListOf<List>(numbers)), isGood);
        if (isGood) {
            _model.insert(appends ? _model.end() : _node, numbers.begin(), numbers.end());
            _index += static_cast<int>(numbers.size());
        }
    }
    void IterateSet() {
        const int value = Value();
        Check(_it.Set(Make<List>(value)), HasNode());
        if (HasNode()) {
            *_node = value;
        }
    }
    void IterateRemove() {
        const bool forward = Number(0, 1) == 0;
        Check(forward ? _it.RemoveGoToNext() : _it.RemoveGoToPrev(), HasNode());
        if (!HasNode()) {
            return;
        }
        const auto removed = _node;
        if (forward) {
            ++_node;
            ++_index;
        } else {
            ModelPrevious();
        }
        _model.erase(removed);
    }

    std::mt19937 _random;
    List _list;
    Model _model;
    typename List::iterator _it;
    /// The iterator's node in the model; its end when there is none.
    Model::iterator _node = _model.end();
    int _index = -2;
    bool _hasList = false;
};

} // namespace

template <class List>
class ListModel : public testing::Test {};
TYPED_TEST_SUITE(ListModel, All);

TYPED_TEST(ListModel, AgreesOverARandomSequence) {
    for (const unsigned int seed : {1u, 2u, 3u}) {
        Pair<TypeParam> pair(seed);
        for (int step = 0; step < 5'000; ++step) {
            pair.Step();
            pair.ExpectEqual();
            if (this->HasFatalFailure() || this->HasNonfatalFailure()) {
                FAIL() << "seed " << seed << ", step " << step;
            }
        }
    }
}
