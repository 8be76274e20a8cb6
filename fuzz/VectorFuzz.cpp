// Random sequences of operations on a vector of integers and one of strings, beside std::vector.

#include "ContainerFuzz.h"
#include "QORSysTSVectorOfInt.h"
#include "VELVectorOfUnicodeString.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using ContainerFuzz::Input;
using ContainerFuzz::Require;

constexpr int Ok = 0;
constexpr int MostElements = 500;

template <class Element>
Element Make(int number) {
    return number;
}
template <>
QORUnicodeString Make<QORUnicodeString>(int number) {
    return QORUnicodeString(std::to_string(number).c_str());
}

int NumberOf(int element) {
    return element;
}
int NumberOf(const QORUnicodeString& element) {
    return std::atoi(element.ConvertToChar());
}

template <class Vector>
class Pair {
public:
    using Element = typename Vector::Element;

    void Run(Input& input) {
        while (!input.IsEmpty()) {
            Step(input);
            RequireEqual();
            if (Size() > MostElements) {
                Require(_vector.RemoveRange(MostElements / 2, Size()) == Ok);
                _model.resize(MostElements / 2);
            }
        }
    }

private:
    int Size() const { return static_cast<int>(_model.size()); }
    bool IsIndex(int i) const { return i >= 0 && i < Size(); }
    bool IsRange(int first, int end) const { return 0 <= first && first < end && end <= Size(); }

    void ModelInsert(int status, int pos, const std::vector<int>& numbers) {
        Require((status == Ok) == (pos >= 0 && pos <= Size()));
        if (status == Ok) {
            _model.insert(_model.begin() + pos, numbers.begin(), numbers.end());
        }
    }
    void ModelRemove(int status, bool isGood, int first, int end) {
        Require((status == Ok) == isGood);
        if (isGood) {
            _model.erase(_model.begin() + first, _model.begin() + end);
        }
    }

    void Step(Input& input) {
        const int operation = input.Byte() % 16;
        const int place = input.Place(Size());
        const int other = input.Place(Size());
        switch (operation) {
        case 0:
            ModelInsert(_vector.Insert(place, Make<Element>(operation)), place, {operation});
            break;
        case 1:
            ModelInsert(_vector.PutBack(Make<Element>(place)), Size(), {place});
            break;
        case 2:
            if (IsIndex(other)) {
                const int own = _model[static_cast<std::size_t>(other)];
                ModelInsert(_vector.Insert(place, *_vector.GetAsPtr(other)), place, {own});
            }
            break;
        case 3:
            ModelInsert(_vector.Insert(place, _vector), place, std::vector<int>(_model));
            break;
        case 4: {
            const int first = input.Place(Size());
            const int status = _vector.Insert(place, _vector, first, other);
            if (IsRange(first, other)) {
                ModelInsert(status, place, {_model.begin() + first, _model.begin() + other});
            } else {
                Require(status != Ok);
            }
            break;
        }
        case 5:
            ModelRemove(_vector.Remove(place), IsIndex(place), place, place + (IsIndex(place) ? 1 : 0));
            break;
        case 6:
            ModelRemove(_vector.RemoveRange(place, other), IsRange(place, other), place, other);
            break;
        case 7: {
            Element out = Make<Element>(0);
            const bool isGood = Size() > 0;
            const int expected = isGood ? _model.front() : 0;
            ModelRemove(_vector.PopFront(out), isGood, 0, 1);
            Require(NumberOf(out) == expected);
            break;
        }
        case 8: {
            Element out = Make<Element>(0);
            const bool isGood = Size() > 0;
            const int expected = isGood ? _model.back() : 0;
            ModelRemove(_vector.PopBack(out), isGood, Size() - 1, Size());
            Require(NumberOf(out) == expected);
            break;
        }
        default:
            StepAside(input, operation, place, other);
        }
    }

    void StepAside(Input& input, int operation, int place, int other) {
        switch (operation) {
        case 9:
            // Not as large as places may be.
            Require((_vector.SetCapacity(place % 5000) == Ok) == (place % 5000 >= Size()));
            break;
        case 10: {
            const Vector copy(_vector, place, other);
            Require(copy.GetLength() == (IsRange(place, other) ? other - place : 0));
            if (input.Byte() % 2 == 0) {
                _vector = copy;
                _model = IsRange(place, other) ? std::vector<int>(_model.begin() + place, _model.begin() + other)
                                               : std::vector<int>();
            }
            break;
        }
        case 11:
            Require((_vector.Set(place, Make<Element>(other)) == Ok) == IsIndex(place));
            if (IsIndex(place)) {
                _model[static_cast<std::size_t>(place)] = other;
            }
            break;
        case 12: {
            int expected = -1;
            if (IsIndex(place)) {
                const auto found = std::find(_model.begin() + place, _model.end(), other);
                expected = found != _model.end() ? static_cast<int>(found - _model.begin()) : -1;
            }
            Require(_vector.Find(Make<Element>(other), place) == expected);
            break;
        }
        case 13: {
            typename Vector::iterator it(_vector, place);
            ModelInsert(it.Insert(_vector), place, std::vector<int>(_model));
            break;
        }
        case 14: {
            typename Vector::iterator it(_vector, place);
            const bool isGood = IsIndex(place);
            ModelRemove(it.RemoveGoToNext(), isGood, place, place + (isGood ? 1 : 0));
            Require(it.GetIndex() == place + (isGood ? 1 : 0));
            break;
        }
        default:
            _vector.Clear();
            _model.clear();
        }
    }

    void RequireEqual() {
        Require(_vector.GetLength() == Size());
        auto it = _vector.Begin();
        for (const int number : _model) {
            Require(NumberOf(*it.GetAsPtrGoToNext()) == number);
        }
        Require(it.IsEnd());
        const Vector copy(_vector);
        Require(copy == _vector);
    }

    Vector _vector;
    std::vector<int> _model;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input numbers(data, size);
    Pair<QORSysTSVectorOfInt>().Run(numbers);
    Input strings(data, std::min<std::size_t>(size, 600));
    Pair<VELVectorOfUnicodeString>().Run(strings);
    return 0;
}
