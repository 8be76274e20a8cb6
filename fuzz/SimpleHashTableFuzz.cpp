// Random sequences of operations on a simple hash table, beside a plain list in node order; and on one whose elements'
// hashes change under it, which must merely stay safe.

#include "ContainerFuzz.h"
#include "HashedElement.h"
#include "QORSysSimpleHashTable.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using ContainerFuzz::Require;

using namespace HashedElement;

class Pair {
public:
    explicit Pair(bool isSteady) : _table(0, HashOf, AreEqual), _isSteady(isSteady) {
        for (int key = 0; key < 256; ++key) {
            // Several elements to a hash.
            _elements.push_back({static_cast<unsigned int>(key / 3), key});
        }
    }

    void Step(int operation, int byte) {
        Element* const element = &_elements[static_cast<std::size_t>(byte)];
        switch (operation % 8) {
        case 0:
        case 1:
            Remove(element);
            break;
        case 2:
            if (_isSteady) {
                // Never 0, which would double the table each time.
                Require(_table.ReAllocate(byte + 1) == 0);
            } else {
                element->hash = static_cast<unsigned int>(operation);
            }
            break;
        case 3:
            Look(element);
            break;
        case 4:
            if (byte == 0) {
                _table.RemoveAll();
                _model.clear();
            }
            break;
        default:
            Insert(element);
        }
        if (_isSteady) {
            Require(_table.Size() == static_cast<int>(_model.size()));
            for (int i = -1; i <= _table.Size(); ++i) {
                const bool isIndex = i >= 0 && i < _table.Size();
                Require(_table.Get(i) == (isIndex ? _model[static_cast<std::size_t>(i)] : nullptr));
            }
        }
    }

private:
    void Insert(Element* element) {
        const int result = _table.Insert(element);
        const bool isThere = std::find(_model.begin(), _model.end(), element) != _model.end();
        if (!isThere) {
            _model.push_back(element);
        }
        Require(!_isSteady || result == (isThere ? 0 : 1));
    }
    void Remove(Element* element) {
        void* const removed = _table.Remove(element);
        const auto it = std::find(_model.begin(), _model.end(), element);
        Require(!_isSteady || removed == (it != _model.end() ? element : nullptr));
        if (it != _model.end()) {
            *it = _model.back();
            _model.pop_back();
        }
    }
    void Look(Element* element) {
        const auto it = std::find(_model.begin(), _model.end(), element);
        void* const found = _table.Locate(element);
        void* const next = _table.Next(element);
        void* const sameHash = _table.NextWithKey(element);
        void* const ofHash = _table.KeyLocate(element->hash);
        if (!_isSteady) {
            return;
        }
        Require(found == (it != _model.end() ? element : nullptr));
        Require(next == (it != _model.end() && it + 1 != _model.end() ? *(it + 1) : nullptr));
        Require(sameHash == nullptr || HashOf(sameHash) == element->hash);
        Require(ofHash == nullptr || HashOf(ofHash) == element->hash);
        Require(ofHash != nullptr || it == _model.end());
    }

    std::vector<Element> _elements;
    QORSysSimpleHashTable _table;
    std::vector<Element*> _model;
    bool _isSteady;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const bool isSteady : {true, false}) {
        Pair pair(isSteady);
        for (std::size_t i = 0; i + 1 < size; i += 2) {
            pair.Step(data[i], data[i + 1]);
        }
    }
    return 0;
}
