/// @file
/// A process-wide object that is still there when the last static destructor runs.
#pragma once

#include <new>

/// Holds one `T` that is made with the holder and never destroyed. The holder is trivially destructible; made static
/// within a function, its object is there from the first call, be it from another library's static initialisers, until
/// the process has ended.
template <typename T>
class NeverDestroyed {
public:
    NeverDestroyed() { new (_storage) T; }
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T& Get() { return *std::launder(reinterpret_cast<T*>(_storage)); }

private:
    alignas(T) unsigned char _storage[sizeof(T)];
};
