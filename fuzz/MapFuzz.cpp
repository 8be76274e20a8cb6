// Random sequences of operations on a map of integers and one of strings, beside std::map.

#include "ContainerFuzz.h"
#include "QORSysTSHashMapOfIntToInt.h"
#include "QORSysTSMapOfUnicodeStringUnicodeString.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using ContainerFuzz::Input;
using ContainerFuzz::Require;

constexpr int Ok = 0;

/// Among others, some that are no load factors.
float LoadFactor(Input& input) {
    constexpr float Factors[] = {0.75F, 0.1F, 0.0F, -1.0F, 1.0F, 100.0F, 101.0F, 5.0F};
    return Factors[input.Byte() % 8];
}

template <class Element>
Element Make(int number) {
    // Negative as often as not.
    return (number - 128) * 16'777'213;
}
template <>
QORSysTSUnicodeString Make<QORSysTSUnicodeString>(int number) {
    return QORSysTSUnicodeString(std::to_string(number).c_str());
}

template <class Map>
class Pair {
public:
    using Key = typename Map::Key;
    using Value = typename Map::Value;

    void Run(Input& input) {
        while (!input.IsEmpty()) {
            Step(input);
            RequireEqual();
        }
    }

private:
    void Step(Input& input) {
        const int operation = input.Byte() % 16;
        const int key = input.Byte();
        const int value = input.Byte() % 16;
        switch (operation) {
        case 0:
            _map.Remove(Make<Key>(key));
            _model.erase(key);
            break;
        case 1:
            _map.RemoveValues(Make<Value>(value));
            std::erase_if(_model, [=](const auto& entry) { return entry.second == value; });
            break;
        case 2:
            _map.ReHash(key - 3, LoadFactor(input));
            break;
        case 3:
            if (key < 20) {
                _map.Clear(key - 3, LoadFactor(input));
                _model.clear();
            }
            break;
        case 4:
            _map = Map(_map, key - 3, LoadFactor(input));
            break;
        case 5:
            _map.Put(_map);
            break;
        case 6: {
            Map other(key - 3, LoadFactor(input));
            other.Put(Make<Key>(value), Make<Value>(value));
            other.Put(Make<Key>(key), Make<Value>(value));
            _map.Put(other);
            _model[value] = value;
            _model[key] = value;
            break;
        }
        case 7: {
            const auto it = _model.find(key);
            auto out = Make<Value>(99);
            const bool isThere = it != _model.end();
            Require((_map.Get(Make<Key>(key), out) == Ok) == isThere);
            Require(out == Make<Value>(isThere ? it->second : 99));
            break;
        }
        default:
            _map.Put(Make<Key>(key), Make<Value>(value));
            _model[key] = value;
        }
    }

    void RequireEqual() {
        Require(_map.GetLength() == static_cast<int>(_model.size()));
        for (const auto& [key, value] : _model) {
            const Value* const found = _map.GetAsPtr(Make<Key>(key));
            Require(found != nullptr && *found == Make<Value>(value));
        }
        std::size_t count = 0;
        auto it = _map.cBegin();
        while (it.GetEntryAsPtrGoToNext() != nullptr) {
            ++count;
        }
        Require(count == _model.size());
        Require(Map(_map) == _map);
    }

    Map _map;
    std::map<int, int> _model;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input numbers(data, size);
    Pair<QORSysTSHashMapOfIntToInt>().Run(numbers);
    Input strings(data, std::min<std::size_t>(size, 300));
    Pair<QORSysTSMapOfUnicodeStringUnicodeString>().Run(strings);
    return 0;
}
