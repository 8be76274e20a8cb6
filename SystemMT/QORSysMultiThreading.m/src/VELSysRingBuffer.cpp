#include "VELSysRingBuffer.h"

#include <memory>
#include <mutex>
#include <new>

struct VELSysRingBuffer {
    std::mutex mutex;
    std::unique_ptr<void*[]> entries;
    unsigned long capacity;
    unsigned long first = 0;
    unsigned long count = 0;
};

VELSysRingBuffer* VELSysRingBufferAlloc(int capacity) {
    if (capacity < 1) {
        return nullptr;
    }
    const auto size = static_cast<unsigned long>(capacity);
    std::unique_ptr<void*[]> entries(new (std::nothrow) void*[size]);
    if (!entries) {
        return nullptr;
    }
    return new (std::nothrow) VELSysRingBuffer{{}, std::move(entries), size};
}

int VELSysRingBufferPush(VELSysRingBuffer* ring, void* entry) {
    if (!ring || !entry) {
        return -1;
    }
    const std::lock_guard lock(ring->mutex);
    if (ring->count == ring->capacity) {
        return -1;
    }
    ring->entries[(ring->first + ring->count) % ring->capacity] = entry;
    ++ring->count;
    return 0;
}

int VELSysRingBufferPop(VELSysRingBuffer* ring, void** entry) {
    if (!entry) {
        return -1;
    }
    *entry = nullptr;
    if (!ring) {
        return -1;
    }
    const std::lock_guard lock(ring->mutex);
    if (ring->count == 0) {
        return -1;
    }
    *entry = ring->entries[ring->first];
    ring->first = (ring->first + 1) % ring->capacity;
    --ring->count;
    return 0;
}

int VELSysRingBufferIsEmpty(VELSysRingBuffer* ring) {
    if (!ring) {
        return 0;
    }
    const std::lock_guard lock(ring->mutex);
    return ring->count == 0 ? 0 : -1;
}

void VELSysRingBufferFree(VELSysRingBuffer* ring) {
    delete ring;
}
