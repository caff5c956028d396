// The framework the library stands on: the object base class, exceptions, archives and the growable
// arrays. Everything else in the library passes geometry in these arrays.
//
// Arrays are indexed by signed 32-bit integers, check every index, grow by a fixed rule and fill new
// elements with zero bytes. They are plain data without locks: one thread at a time may use an array,
// different arrays may be used from different threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include "tarvex/export.h"
#include "tarvex/platform.h"

namespace tarvex {

class CArchive;

// ---------------------------------------------------------------------------------------------
// Exceptions

/// An index or a size that an array cannot honour.
class TARVEX_API CInvalidArgException : public std::invalid_argument {
  public:
    CInvalidArgException();
    ~CInvalidArgException() override;
};

/// Memory that could not be had.
class TARVEX_API CMemoryException : public std::bad_alloc {
  public:
    CMemoryException() noexcept;
    ~CMemoryException() override;
    const char* what() const noexcept override;
};

/// An archive that ends early, announces more than it holds, or cannot be read or written.
class TARVEX_API CArchiveException : public std::runtime_error {
  public:
    explicit CArchiveException(const char* what);
    explicit CArchiveException(const std::string& what);
    ~CArchiveException() override;
};

[[noreturn]] TARVEX_API void AfxThrowInvalidArgException();
[[noreturn]] TARVEX_API void AfxThrowMemoryException();

// ---------------------------------------------------------------------------------------------
// Objects

/// The name and size of a class, as `CObject::GetRuntimeClass` tells it. A class that declares none of
/// its own tells its base's.
struct CRuntimeClass {
    const char* m_lpszClassName;
    int m_nObjectSize;
};

/// Root of the classes that can be archived. Its virtual operations stand in this order:
/// run-time class, destructor, `Serialize`, `AssertValid`, `Dump`.
class TARVEX_API CObject {
  public:
    virtual const CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject();
    /// Reads or writes the object, by the archive's direction. The base has nothing to archive.
    virtual void Serialize(CArchive& ar);
    virtual void AssertValid() const;
    virtual void Dump() const;

  protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};

/// A device context as drawing functions take it: the handle drawn to, which stays its maker's.
class TARVEX_API CDC : public CObject {
  public:
    CDC() = default;
    explicit CDC(HDC dc) : m_hDC(dc) {}
    const CRuntimeClass* GetRuntimeClass() const override;
    /// The handle; null for a context that is attached to none, on which drawing leaves no trace.
    HDC GetSafeHdc() const { return m_hDC; }

    HDC m_hDC = nullptr;
};

// ---------------------------------------------------------------------------------------------
// Archives

/// A stream of raw bytes, either read or written, over memory or over a file.
///
/// Counts are stored as a 16-bit word, or as the word 0xFFFF followed by a 32-bit count when they do
/// not fit below 0xFFFF. Numbers are little-endian; records are written as they stand in memory.
/// Reading past the end, or any failure of the file, raises CArchiveException.
class TARVEX_API CArchive {
  public:
    enum Mode { store, load };

    /// Reads from bytes that stay the caller's and must outlive the archive.
    explicit CArchive(std::span<const std::byte> source);
    /// Appends to the caller's buffer, which must outlive the archive.
    explicit CArchive(std::vector<std::byte>& sink);
    /// Opens a file; storing replaces what the file held. Raises CArchiveException when it cannot.
    CArchive(const std::filesystem::path& file, Mode mode);
    /// Closes the archive; a failure to write what is still buffered is lost here, so call `Close`.
    ~CArchive();
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    bool IsLoading() const;
    bool IsStoring() const;

    /// Reads exactly `size` bytes. Raises when fewer remain (nothing is promised about `data` then)
    /// and when the archive is being stored.
    void Read(void* data, std::size_t size);
    /// Writes exactly `size` bytes. Raises when the archive is being loaded.
    void Write(const void* data, std::size_t size);
    /// Makes room for as many bytes to be written, in one step, where they go to memory.
    void Expect(std::size_t size);
    std::uint32_t ReadCount();
    void WriteCount(std::uint32_t count);

    /// Bytes left to read; 0 when storing. A reader asks this before it allocates what a count claims.
    std::uint64_t Remaining() const;
    /// Writes out what is buffered and lets go of the file. Raises when that fails. Idempotent.
    void Close();

  private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// ---------------------------------------------------------------------------------------------
// Growable arrays

/// Growable array of plain records, contiguous, moved by byte copies.
///
/// Growth: a request beyond the capacity makes the capacity max(request, capacity + step), where the
/// step is the one set by `SetSize`, or count/8 clamped to 4..1024 when that is 0. Because of the cap,
/// appending n elements one by one copies O(n²/1024) of them: whoever fills a large array sets its
/// size once. New elements are zero bytes; constructors never run.
///
/// Any index outside the array and any impossible size raise CInvalidArgException, failing allocation
/// raises CMemoryException, and the array is as it was before the call. Pointers and references to
/// elements hold until the array next grows, frees its storage or is moved from.
template <class T, class ARG = T>
class CArray : public CObject {
    static_assert(std::is_trivially_copyable_v<T>, "elements are moved with byte copies");

  public:
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;

    CArray() = default;
    ~CArray() override { ::operator delete(m_data); }
    CArray(const CArray&) = delete;
    CArray& operator=(const CArray&) = delete;
    /// Takes over storage and growth step; `other` is left as if new.
    CArray(CArray&& other) noexcept { Swap(other); }
    CArray& operator=(CArray&& other) noexcept {
        CArray(std::move(other)).Swap(*this);
        return *this;
    }
    void Swap(CArray& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_count, other.m_count);
        std::swap(m_capacity, other.m_capacity);
        std::swap(m_growBy, other.m_growBy);
    }

    int GetSize() const { return m_count; }
    int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    int GetUpperBound() const { return m_count - 1; }

    /// Sets the number of elements: 0 frees the storage, shrinking keeps it. `growBy` >= 0 becomes the
    /// growth step (0: automatic), -1 keeps the step.
    void SetSize(int newSize, int growBy = -1) {
        if (newSize < 0 || growBy < -1) AfxThrowInvalidArgException();
        if (newSize == 0) {
            ::operator delete(m_data);
            m_data = nullptr;
            m_count = m_capacity = 0;
        } else if (newSize > m_capacity) {
            const int step = growBy >= 0 ? growBy : m_growBy;
            MoveTo(GrownCapacity(newSize, step));
        }
        if (newSize != 0) {
            ZeroFill(m_count, newSize);
            m_count = newSize;
        }
        if (growBy >= 0) m_growBy = growBy;
    }

    /// Gives back the storage beyond the count.
    void FreeExtra() {
        if (m_count == 0) {
            SetSize(0);
        } else if (m_capacity != m_count) {
            MoveTo(m_count);
        }
    }

    void RemoveAll() { SetSize(0); }

    T& GetAt(int i) { return m_data[Checked(i)]; }
    const T& GetAt(int i) const { return m_data[Checked(i)]; }
    T& ElementAt(int i) { return m_data[Checked(i)]; }
    const T& ElementAt(int i) const { return m_data[Checked(i)]; }
    T& operator[](int i) { return m_data[Checked(i)]; }
    const T& operator[](int i) const { return m_data[Checked(i)]; }
    T* GetData() { return m_data; }
    const T* GetData() const { return m_data; }
    /// The elements as a range; an array also converts to a std::span of them.
    T* begin() { return m_data; }
    T* end() { return m_data + m_count; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_count; }

    void SetAt(int i, ARG value) { m_data[Checked(i)] = value; }

    /// Stores at any index >= 0; elements between the old count and `i` are zero bytes.
    void SetAtGrow(int i, ARG value) {
        if (i < 0 || i == INT32_MAX) AfxThrowInvalidArgException();
        const T kept = value;  // `value` may be a reference into the storage that is about to move
        if (i >= m_count) SetSize(i + 1);
        m_data[i] = kept;
    }

    /// Returns the new element's index.
    int Add(ARG value) {
        const int i = m_count;
        SetAtGrow(i, value);
        return i;
    }

    /// Appends all of `src` and returns the old count. Raises for `src` being this array.
    int Append(const CArray& src) {
        if (&src == this) AfxThrowInvalidArgException();
        const int old = m_count;
        SetSize(Sum(old, src.m_count));
        CopyIn(old, src.m_data, src.m_count);
        return old;
    }

    void Copy(const CArray& src) {
        if (&src == this) return;
        SetSize(src.m_count);
        CopyIn(0, src.m_data, src.m_count);
    }

    /// Inserts `n` copies of `value` at `i`; past the end the array first grows to `i`.
    void InsertAt(int i, ARG value, int n = 1) {
        if (i < 0 || n <= 0) AfxThrowInvalidArgException();
        const T kept = value;
        OpenGap(i, n);
        for (int k = 0; k < n; ++k) m_data[i + k] = kept;
    }

    /// Inserts the elements of `src` (which may be this array: then what it held before the call).
    void InsertAt(int i, CArray* src) {
        if (i < 0 || src == nullptr) AfxThrowInvalidArgException();
        if (src->IsEmpty()) return;
        if (src == this) {
            CArray held;
            held.Copy(*this);
            InsertAt(i, &held);
            return;
        }
        OpenGap(i, src->m_count);
        CopyIn(i, src->m_data, src->m_count);
    }

    /// Removes elements [i, i + n); the capacity is kept.
    void RemoveAt(int i, int n = 1) {
        if (i < 0 || n < 0 || n > m_count - i) AfxThrowInvalidArgException();
        if (n == 0) return;
        std::memmove(static_cast<void*>(m_data + i), m_data + i + n, Bytes(m_count - i - n));
        m_count -= n;
    }

    /// Archives the count and then the elements' bytes. Loading raises CArchiveException, before
    /// anything is allocated and with the array as it was, when the archive does not hold as many
    /// elements as it announces.
    ///
    /// A record with bytes that mean nothing outside this process (padding, addresses) declares
    /// `void ClearUnarchived(Record&)` beside itself: those bytes are zero in archives, and in the
    /// elements after loading.
    void Serialize(CArchive& ar) override {
        if (ar.IsStoring()) {
            ar.WriteCount(static_cast<std::uint32_t>(m_count));
            StoreElements(ar);
            return;
        }
        const std::uint32_t count = ar.ReadCount();
        if (count > INT32_MAX || count > ar.Remaining() / sizeof(T))
            throw CArchiveException("the archive announces more elements than it holds");
        LoadElements(ar, static_cast<int>(count));
    }

  private:
    void StoreElements(CArchive& ar) const {
        ar.Expect(Bytes(m_count));
        if constexpr (requires(T & record) { ClearUnarchived(record); }) {
            constexpr int chunkSize = 64;
            T chunk[chunkSize];
            for (int done = 0; done < m_count; done += chunkSize) {
                const int n = m_count - done < chunkSize ? m_count - done : chunkSize;
                std::memcpy(static_cast<void*>(chunk), m_data + done, Bytes(n));
                for (int k = 0; k < n; ++k) ClearUnarchived(chunk[k]);
                ar.Write(chunk, Bytes(n));
            }
        } else {
            ar.Write(m_data, Bytes(m_count));
        }
    }

    /// Replaces the elements by `count` read from the archive. New storage is not zeroed first, and what
    /// needs clearing is cleared while it is in the cache: a large array is passed over once.
    void LoadElements(CArchive& ar, int count) {
        if (count == 0 || count <= m_capacity) {
            SetSize(count);
        } else {
            MoveTo(GrownCapacity(count, m_growBy));
            m_count = count;
        }
        constexpr int chunkSize = sizeof(T) < 32768 ? static_cast<int>(32768 / sizeof(T)) : 1;
        int done = 0;
        try {
            while (done < count) {
                const int n = count - done < chunkSize ? count - done : chunkSize;
                ar.Read(m_data + done, Bytes(n));
                if constexpr (requires(T & record) { ClearUnarchived(record); }) {
                    for (int k = done; k < done + n; ++k) ClearUnarchived(m_data[k]);
                }
                done += n;
            }
        } catch (...) {
            ZeroFill(done, count);  // no element is left without a value
            throw;
        }
    }

    static std::size_t Bytes(int n) { return static_cast<std::size_t>(n) * sizeof(T); }

    static int Sum(int a, int b) {
        if (b > INT32_MAX - a) AfxThrowInvalidArgException();
        return a + b;
    }

    int Checked(int i) const {
        if (static_cast<std::uint32_t>(i) >= static_cast<std::uint32_t>(m_count))
            AfxThrowInvalidArgException();
        return i;
    }

    int GrownCapacity(int newSize, int step) const {
        if (m_data == nullptr) return newSize > step ? newSize : step;
        if (step == 0) {
            step = m_count / 8;
            step = step < 4 ? 4 : step > 1024 ? 1024 : step;
        }
        const std::int64_t grown = std::int64_t{m_capacity} + step;
        if (grown <= newSize) return newSize;
        return grown > INT32_MAX ? INT32_MAX : static_cast<int>(grown);
    }

    void ZeroFill(int from, int to) {
        if (to > from) std::memset(static_cast<void*>(m_data + from), 0, Bytes(to - from));
    }

    void CopyIn(int at, const T* src, int n) {
        if (n > 0) std::memcpy(static_cast<void*>(m_data + at), src, Bytes(n));
    }

    /// Moves the elements to new storage of that capacity.
    void MoveTo(int capacity) {
        if (static_cast<std::size_t>(capacity) > static_cast<std::size_t>(PTRDIFF_MAX) / sizeof(T))
            AfxThrowInvalidArgException();
        T* storage = static_cast<T*>(::operator new(Bytes(capacity), std::nothrow));
        if (storage == nullptr) AfxThrowMemoryException();
        if (m_count > 0) std::memcpy(static_cast<void*>(storage), m_data, Bytes(m_count));
        ::operator delete(m_data);
        m_data = storage;
        m_capacity = capacity;
    }

    /// Makes room for `n` elements at `i`, moving up what stands there.
    void OpenGap(int i, int n) {
        const int old = m_count;
        if (i >= old) {
            SetSize(Sum(i, n));
            return;
        }
        SetSize(Sum(old, n));
        std::memmove(static_cast<void*>(m_data + i + n), m_data + i, Bytes(old - i));
        std::memset(static_cast<void*>(m_data + i), 0, Bytes(n));
    }

    T* m_data = nullptr;
    int m_count = 0;
    int m_capacity = 0;
    int m_growBy = 0;
};

// The arrays that the library's functions take and give exist once, in the library; an array of any other
// element is compiled into whoever uses it.
extern template class TARVEX_API CArray<void*, void*>;
extern template class TARVEX_API CArray<DWORD, DWORD>;
extern template class TARVEX_API CArray<double, double>;
extern template class TARVEX_API CArray<tagPOINT, tagPOINT>;

/// Array of pointers it does not own. Nothing of it is archived.
class TARVEX_API CPtrArray : public CArray<void*, void*> {
  public:
    const CRuntimeClass* GetRuntimeClass() const override;
    void Serialize(CArchive& ar) override;
};

/// Array of 32-bit words.
class TARVEX_API CDWordArray : public CArray<DWORD, DWORD> {
  public:
    const CRuntimeClass* GetRuntimeClass() const override;
};

}  // namespace tarvex
