// The table behind every handle: which objects live, of what kind they are, and what they hold.
//
// A handle is a slot's index with the slot's generation above it. Deleting an object raises the
// generation, and freed slots wait in a queue before they serve again, so an old handle is told from
// every later object. One mutex guards the table and what is selected where; pixels are worked on
// outside it, by whoever holds the objects that a look-up shared out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace tarvex::platform {

enum class Kind { Bitmap, Brush, Pen, Font, Context };

struct Object {
    explicit Object(Kind kindOfObject) : kind(kindOfObject) {}
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;

    const Kind kind;
    bool stock = false;  ///< cannot be deleted
    int selections = 0;  ///< contexts it is selected into; under the registry's lock
};

class Registry {
  public:
    /// The one table. It lives until the library is unloaded.
    static Registry& Instance();

    std::unique_lock<std::mutex> Lock() { return std::unique_lock(m_mutex); }

    /// Null when the table is full. Raises std::bad_alloc.
    void* Insert(std::shared_ptr<Object> object);

    /// The object of a handle, when there is one of that kind.
    template <class T>
    std::shared_ptr<T> Find(const void* handle) {
        const auto lock = Lock();
        return FindLocked<T>(handle);
    }

    // The caller holds the lock for these.
    std::shared_ptr<Object> FindAnyLocked(const void* handle) const;
    template <class T>
    std::shared_ptr<T> FindLocked(const void* handle) const {
        std::shared_ptr<Object> object = FindAnyLocked(handle);
        if (object == nullptr || object->kind != T::kKind) return nullptr;
        return std::static_pointer_cast<T>(std::move(object));
    }
    /// The handle must be one that was just found. Returns the object so that it can be let go of
    /// without the lock.
    std::shared_ptr<Object> EraseLocked(const void* handle);

    /// Objects that someone has yet to delete or release; stock objects do not count.
    std::size_t LiveObjects();

  private:
    struct Slot {
        std::shared_ptr<Object> object;
        std::uint32_t generation = 1;
        std::uint32_t nextFree = 0;
    };

    std::mutex m_mutex;
    std::vector<Slot> m_slots;
    // The queue of free slots runs through the slots themselves, so that deleting needs no memory.
    std::uint32_t m_firstFree = 0;
    std::uint32_t m_lastFree = 0;
    std::size_t m_freeCount = 0;
    std::size_t m_live = 0;
};

}  // namespace tarvex::platform
