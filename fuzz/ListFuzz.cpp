// Random sequences of operations on a list of strings and its iterator, beside std::list.

#include "ContainerFuzz.h"
#include "QORSysTSListOfUnicodeString.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <list>
#include <string>
#include <vector>

namespace {

using ContainerFuzz::Input;
using ContainerFuzz::Require;

constexpr int Ok = 0;
constexpr int MostElements = 200;

using List = QORSysTSListOfUnicodeString;
using Model = std::list<int>;

QORSysTSUnicodeString Make(int number) {
    return QORSysTSUnicodeString(std::to_string(number).c_str());
}

int NumberOf(const QORSysTSUnicodeString& element) {
    return std::atoi(element.ConvertToChar());
}

class Pair {
public:
    void Run(Input& input) {
        while (!input.IsEmpty()) {
            Step(input);
            RequireEqual();
            if (Size() > MostElements) {
                LeaveNodes();
                Require(_list.RemoveRange(MostElements / 2, Size()) == Ok);
                _model.resize(MostElements / 2);
            }
        }
    }

private:
    int Size() const { return static_cast<int>(_model.size()); }
    bool IsPlace(int pos) const { return pos >= 0 && pos <= Size(); }
    bool IsIndex(int i) const { return i >= 0 && i < Size(); }
    bool IsRange(int first, int end) const { return 0 <= first && first < end && end <= Size(); }
    bool HasNode() const { return _node != _model.end(); }
    Model::iterator At(int i) { return std::next(_model.begin(), i); }
    Model Copy(int first, int end) { return {At(first), At(end)}; }

    void ModelInsert(int status, int pos, const Model& numbers) {
        Require((status == Ok) == IsPlace(pos));
        if (status == Ok) {
            _model.insert(At(pos), numbers.begin(), numbers.end());
        }
    }
    /// The iterator could stand on a node that goes.
    void LeaveNodes() {
        _it = List::iterator();
        _node = _model.end();
        _index = -2;
        _hasList = false;
    }

    void Step(Input& input) {
        const int operation = input.Byte() % 20;
        const int place = input.Place(Size());
        const int other = input.Place(Size());
        switch (operation) {
        case 0:
            ModelInsert(_list.Insert(place, Make(other)), place, {other});
            break;
        case 1:
            _list.PutBack(Make(place));
            _model.push_back(place);
            break;
        case 2:
            _list.PutFront(Make(place));
            _model.push_front(place);
            break;
        case 3:
            if (IsIndex(other)) {
                ModelInsert(_list.Insert(place, *_list.GetAsPtr(other)), place, {*At(other)});
            }
            break;
        case 4:
            ModelInsert(_list.Insert(place, _list), place, Model(_model));
            break;
        case 5: {
            const int first = input.Place(Size());
            const int status = _list.Insert(place, _list, first, other);
            if (IsRange(first, other)) {
                ModelInsert(status, place, Copy(first, other));
            } else {
                Require(status != Ok);
            }
            break;
        }
        case 6:
            LeaveNodes();
            Require((_list.Remove(place) == Ok) == IsIndex(place));
            if (IsIndex(place)) {
                _model.erase(At(place));
            }
            break;
        case 7:
            LeaveNodes();
            Require((_list.RemoveRange(place, other) == Ok) == IsRange(place, other));
            if (IsRange(place, other)) {
                _model.erase(At(place), At(other));
            }
            break;
        case 8:
            RequireFound(place, other);
            break;
        case 9:
            Require((_list.Set(place, Make(other)) == Ok) == IsIndex(place));
            if (IsIndex(place)) {
                *At(place) = other;
            }
            break;
        case 10: {
            const List copy(_list, place, other);
            Require(copy.GetLength() == (IsRange(place, other) ? other - place : 0));
            if (input.Byte() % 4 == 0) {
                LeaveNodes();
                _list = copy;
                _model = IsRange(place, other) ? Copy(place, other) : Model();
            }
            break;
        }
        case 11:
            Pop(place % 2 == 0);
            break;
        default:
            StepIterator(operation, other);
        }
    }

    void RequireFound(int start, int number) {
        int expected = -1;
        if (IsIndex(start)) {
            const auto found = std::find(At(start), _model.end(), number);
            expected = found != _model.end() ? static_cast<int>(std::distance(_model.begin(), found)) : -1;
        }
        Require(_list.Find(Make(number), start) == expected);
    }

    void Pop(bool atFront) {
        LeaveNodes();
        QORSysTSUnicodeString out = Make(7);
        const int expected = _model.empty() ? 7 : atFront ? _model.front() : _model.back();
        Require(((atFront ? _list.PopFront(out) : _list.PopBack(out)) == Ok) == !_model.empty());
        Require(NumberOf(out) == expected);
        if (!_model.empty()) {
            _model.erase(atFront ? _model.begin() : std::prev(_model.end()));
        }
    }

    void ModelNext() {
        ++_node;
        ++_index;
    }
    void ModelPrevious() {
        _node = _node == _model.begin() ? _model.end() : std::prev(_node);
        --_index;
    }

    void StepIterator(int operation, int number) {
        switch (operation) {
        case 12:
        case 13:
            _it = operation == 12 ? _list.Begin() : _list.Last();
            _hasList = true;
            _index = _model.empty() ? -2 : operation == 12 ? 0 : Size() - 1;
            _node = _model.empty() ? _model.end() : At(_index);
            break;
        case 14:
            Require((_it.Next() == Ok) == (HasNode() || (_hasList && _index == -1)));
            if (HasNode()) {
                ModelNext();
            } else if (_hasList && _index == -1) {
                _node = _model.begin();
            }
            break;
        case 15:
            Require((_it.Prev() == Ok) == (HasNode() || (_hasList && _index == Size())));
            if (HasNode()) {
                ModelPrevious();
            } else if (_hasList && _index == Size() && !_model.empty()) {
                _node = std::prev(_model.end());
            }
            break;
        case 16:
        case 17: {
            const bool appends = _hasList && _index == Size();
            const Model numbers = operation == 16 ? Model{number} : Model(_model);
            const int status = operation == 16 ? _it.Insert(Make(number)) : _it.Insert(_list);
            Require((status == Ok) == (appends || HasNode()));
            if (status == Ok) {
                _model.insert(appends ? _model.end() : _node, numbers.begin(), numbers.end());
                _index += static_cast<int>(numbers.size());
            }
            break;
        }
        default: {
            const bool forward = operation == 18;
            Require(((forward ? _it.RemoveGoToNext() : _it.RemoveGoToPrev()) == Ok) == HasNode());
            if (HasNode()) {
                const auto removed = _node;
                forward ? ModelNext() : ModelPrevious();
                _model.erase(removed);
            }
        }
        }
    }

    void RequireEqual() {
        Require(_list.GetLength() == Size());
        auto forward = _list.cBegin();
        for (const int number : _model) {
            Require(NumberOf(*forward.GetAsConstPtrGoToNext()) == number);
        }
        Require(forward.IsEnd());
        auto backward = _list.cLast();
        for (auto number = _model.rbegin(); number != _model.rend(); ++number) {
            Require(NumberOf(*backward.GetAsConstPtrGoToPrev()) == *number);
        }
        Require(backward.IsEnd());
        Require(_it.GetIndex() == _index);
        Require(_it.IsEnd() == !HasNode());
        Require(!HasNode() || NumberOf(*_it.GetAsConstPtr()) == *_node);
        Require(List(_list) == _list);
    }

    List _list;
    Model _model;
    List::iterator _it;
    Model::iterator _node = _model.end();
    int _index = -2;
    bool _hasList = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, std::min<std::size_t>(size, 1000));
    Pair().Run(input);
    return 0;
}
