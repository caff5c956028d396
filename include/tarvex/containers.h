// Shapes as sets of contours: lists that own the arrays they hold.
//
// A Bezier shape is a CPolyPolyBezier, a group of shapes a COutlines; flattened and raster results
// are lists of points, words or stitch angles, one entry per contour. All lists share one set of
// operations, which on purpose differs from the plain array's: reading out of range gives null
// instead of raising, and writing before the start is ignored.
//
// A list is used by one thread at a time.
#pragma once

#include <memory>
#include <utility>

#include "tarvex/framework.h"
#include "tarvex/records.h"

namespace tarvex {

class CView3D;
class CEnvelop;

/// A list of pointers to elements on the heap that it owns: replacing, removing or clearing a slot
/// destroys the element it held. A slot may be null. Nothing of a list is archived.
///
/// `SetAt`, `SetAtGrow`, `InsertAt` and `Add` take over what they store and nothing that they refuse:
/// when one raises, or ignores a negative index, the element is still the caller's. An element must
/// not be stored twice. Growth follows the arrays' capped rule.
template <class Element>
class COwningList : public CPtrArray {
  public:
    COwningList() = default;
    ~COwningList() override { RemoveAll(); }
    /// Takes over all elements; `other` is left empty.
    COwningList(COwningList&& other) noexcept = default;
    COwningList& operator=(COwningList&& other) noexcept {
        if (this != &other) {
            RemoveAll();
            Swap(other);
        }
        return *this;
    }

    /// Element `i`, or null for a null slot and for an index out of range. Never raises.
    Element* GetAt(int i) { return Holds(i) ? Typed(GetData()[i]) : nullptr; }
    const Element* GetAt(int i) const { return Holds(i) ? Typed(GetData()[i]) : nullptr; }

    /// Element `i`, which must be there: an index out of range or a null slot is the caller's mistake
    /// and raises CInvalidArgException.
    Element& operator[](int i) { return Existing(GetAt(i)); }
    const Element& operator[](int i) const { return Existing(GetAt(i)); }

    /// Replaces element `i`. A negative index is ignored and an index past the end raises
    /// CInvalidArgException; storing what the slot already holds changes nothing.
    void SetAt(int i, Element* element) {
        if (i < 0) return;
        CPtrArray::ElementAt(i);  // raises past the end
        Replace(i, element);
    }

    /// Replaces element `i`, or makes the list longer, with null slots up to `i`. A negative index is
    /// ignored; storing what the slot already holds changes nothing.
    void SetAtGrow(int i, Element* element) {
        if (i < 0) return;
        if (i < GetCount()) {
            Replace(i, element);
        } else {
            CPtrArray::SetAtGrow(i, element);
        }
    }

    /// Appends the element and returns its index.
    int Add(Element* element) { return CPtrArray::Add(element); }
    int Add(std::unique_ptr<Element> element) {
        const int i = CPtrArray::Add(element.get());
        static_cast<void>(element.release());
        return i;
    }

    /// Inserts the element before element `i`; past the end the list first grows to `i`. A negative
    /// index raises CInvalidArgException.
    void InsertAt(int i, Element* element) {
        void* const pointer = element;  // as itself: a list's address would mean the pointers in it
        CPtrArray::InsertAt(i, pointer);
    }

    /// Sets the number of slots: new ones are null, elements beyond the new end are destroyed.
    void SetSize(int newSize, int growBy = -1) {
        if (newSize < 0 || growBy < -1) AfxThrowInvalidArgException();
        for (int i = newSize; i < GetCount(); ++i) Replace(i, nullptr);
        CPtrArray::SetSize(newSize, growBy);
    }

    /// Empties and destroys element `i` and closes the gap. An index out of range is ignored.
    void RemoveAt(int i) {
        if (!Holds(i)) return;
        if (Element* element = GetAt(i)) element->RemoveAll();
        Replace(i, nullptr);
        CPtrArray::RemoveAt(i);
    }

    /// Destroys all elements, in order.
    void RemoveAll() { SetSize(0); }

    /// Becomes a deep copy of the source up to its first null slot: what follows a null slot is not
    /// copied. Copying a list onto itself changes nothing.
    void Copy(const COwningList& source) {
        if (&source == this) return;
        RemoveAll();
        int count = 0;
        while (source.GetAt(count) != nullptr) ++count;
        SetSize(count);
        for (int i = 0; i < count; ++i) {
            auto copy = std::make_unique<Element>();
            copy->Copy(source[i]);
            SetAt(i, copy.release());
        }
    }

    int Append(const CArray& source) = delete;  // two lists would own the same elements

  private:
    static Element* Typed(void* element) { return static_cast<Element*>(element); }

    template <class E>
    static E& Existing(E* element) {
        if (element == nullptr) AfxThrowInvalidArgException();
        return *element;
    }

    bool Holds(int i) const { return i >= 0 && i < GetCount(); }

    void Replace(int i, Element* element) {
        void*& slot = GetData()[i];
        if (slot == element) return;
        delete Typed(std::exchange(slot, element));
    }
};

// These lists, as the arrays in them, exist once, in the library.
extern template class TARVEX_API COwningList<CArray<double, double>>;
extern template class TARVEX_API COwningList<CDWordArray>;
extern template class TARVEX_API COwningList<CArray<tagPOINT, tagPOINT>>;
extern template class TARVEX_API COwningList<CArray<DPOINT, DPOINT>>;
extern template class TARVEX_API COwningList<CArray<BPOINT, BPOINT>>;

/// Stitch angles, in radians, of each contour.
class TARVEX_API CPolyPolyInclination : public COwningList<CArray<double, double>> {};

/// 32-bit words of each contour.
class TARVEX_API CPolyPolyDWord : public COwningList<CDWordArray> {};

/// Polylines with integer coordinates.
class TARVEX_API CPolyPolyPoint : public COwningList<CArray<tagPOINT, tagPOINT>> {};

/// Polylines.
class TARVEX_API CPolyPolyDPoint : public COwningList<CArray<DPOINT, DPOINT>> {
  public:
    /// Replaces every point by its image under the transform, which takes it as (x, y, 0) and gives the
    /// image's x and y.
    void ApplyTransformation(CView3D& view);
    /// Replaces the y of every point by what the envelope makes of it.
    void ApplyEnvelop(CEnvelop& envelope);
};

/// A shape: Bezier contours. Null contours are skipped by every operation below.
class TARVEX_API CPolyPolyBezier : public COwningList<CArray<BPOINT, BPOINT>> {
  public:
    /// Sets `frame` to the bounding box of the contours flattened by `CBezier::GetPolyline` at this
    /// resolution: the box of the curves, up to the resolution, not of their control points. Contours of
    /// fewer than two nodes do not count, not even with their anchor; a shape without any segment leaves
    /// `frame` as it is. Linear in the number of flattened points.
    void CalcFrame(DRECT& frame, double resolution) const;

    /// Replaces every anchor and control point by its image under the transform, which takes it as
    /// (x, y, 0) and gives the image's x and y. The view is left with the last one's.
    void ApplyTransformation(CView3D& view);
    /// Replaces the y of every anchor and control point by what the envelope makes of it. Only nodes are
    /// bent: a long segment keeps its number of nodes and follows the envelope no better than they do.
    void ApplyEnvelop(CEnvelop& envelope);

    /// Gives every contour the same winding, as the free SetOrientation (polygons.h) does: `clockwise`
    /// means as seen on a screen. A contour of zero area counts as clockwise and is reversed at every
    /// call that asks for the other.
    void SetOrientation(bool clockwise);

    /// Closes every contour of two or more nodes whose last anchor differs from its first: a node
    /// without handles is appended at the first anchor, and the handles of the two nodes that faced
    /// each other over the gap (cp1 of the first, cp2 of the last) are drawn in, so that the closing
    /// segment is straight. Contours that are already closed keep their handles.
    void EnsureClosed();
};

extern template class TARVEX_API COwningList<CPolyPolyBezier>;

/// A group of shapes. Null shapes are skipped by every operation below.
class TARVEX_API COutlines : public COwningList<CPolyPolyBezier> {
  public:
    /// Sets `frame` to the union of the shapes' frames. A shape without any segment counts as the box
    /// (0, 0, 0, 0) and so pulls the union to the origin; a group without shapes gives the unit box
    /// (0 to 1 in x and in y). Callers rely on both.
    void CalcFrame(DRECT& frame, double resolution) const;

    /// Transforms every shape.
    void ApplyTransformation(CView3D& view);
    /// Bends every shape.
    void ApplyEnvelop(CEnvelop& envelope);
};

/// Triples of integers beside a list of points, which the triples index as the application sees fit.
/// Only the triples are archived and copied by the array's own operations, never the points.
class TARVEX_API CTrigArray : public CArray<TRIG, TRIG> {
  public:
    /// Point `i` of the point list. Raises CInvalidArgException out of range.
    DPOINT Point(int i) const { return m_points.GetAt(i); }

    /// The point list.
    CArray<DPOINT, DPOINT>& Points() { return m_points; }
    const CArray<DPOINT, DPOINT>& Points() const { return m_points; }

    /// Empties the point list and then the triples.
    void RemoveAll() {
        m_points.RemoveAll();
        CArray::RemoveAll();
    }

  private:
    CArray<DPOINT, DPOINT> m_points;
};

}  // namespace tarvex
