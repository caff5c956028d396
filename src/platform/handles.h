// Scope guards for drawing objects, so that no path out of a function leaks one. They stand on the
// platform's own operations and serve on every system.
//
// Declare them in the order bitmap, context, selection: going out of scope in reverse, each lets go
// of the next before that is deleted.
#pragma once

#include <type_traits>
#include <utility>

#include "tarvex/platform.h"

namespace tarvex {

/// Owns one handle (or none) and releases it by `Release`, a callable without state.
template <class Handle, class Release>
class UniqueHandle {
  public:
    UniqueHandle() = default;
    explicit UniqueHandle(Handle handle) : m_handle(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_handle(other.Detach()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        Reset(other.Detach());
        return *this;
    }
    ~UniqueHandle() { Reset(); }

    Handle Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }
    /// The handle, which is the caller's from here on.
    [[nodiscard]] Handle Detach() { return std::exchange(m_handle, nullptr); }
    void Reset(Handle handle = nullptr) {
        if (const Handle old = std::exchange(m_handle, handle); old != nullptr) Release()(old);
    }

  private:
    Handle m_handle = nullptr;
};

struct DeleteGraphicsObject {
    template <class Handle>
    void operator()(Handle handle) const {
        DeleteObject(handle);
    }
};
struct DeleteMemoryContext {
    void operator()(HDC dc) const { DeleteDC(dc); }
};
struct ReleaseScreen {
    void operator()(HDC dc) const { ReleaseDC(nullptr, dc); }
};

using UniqueBitmap = UniqueHandle<HBITMAP, DeleteGraphicsObject>;
using UniqueBrush = UniqueHandle<HBRUSH, DeleteGraphicsObject>;
using UniquePen = UniqueHandle<HPEN, DeleteGraphicsObject>;
using UniqueFont = UniqueHandle<HFONT, DeleteGraphicsObject>;
using UniqueDC = UniqueHandle<HDC, DeleteMemoryContext>;
/// A context from `GetDC(nullptr)`.
using ScreenDC = UniqueHandle<HDC, ReleaseScreen>;

/// Selects an object into a context for as long as it lives, then puts the former one back.
class SelectedObject {
  public:
    SelectedObject(HDC dc, HGDIOBJ object) : m_dc(dc), m_former(SelectObject(dc, object)) {}
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;
    ~SelectedObject() {
        if (m_former != nullptr) SelectObject(m_dc, m_former);
    }
    /// False when the selection was refused.
    explicit operator bool() const { return m_former != nullptr; }

  private:
    HDC m_dc;
    HGDIOBJ m_former;
};

}  // namespace tarvex
