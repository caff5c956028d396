// Thinning: from a filled shape to lines one pixel wide along its middle.
//
// Columns x grow to the right, rows y downwards, (0, 0) is the top left pixel. The shape is what is set:
// the pixels that are 1 in a bitmap of 1 bit, those that are not black in one of 32 bits. Everything outside
// the bitmap is ground.
#pragma once

#include <memory>

#include "tarvex/containers.h"
#include "tarvex/platform.h"

namespace tarvex {

/// Thins a shape to its skeleton, and turns that into centre lines.
///
///     CSkeleton skeleton;
///     if (skeleton.MakeBitmapMono(picture) && skeleton.DoSkeleton())
///         lines.InitMat(skeleton.Bitmap());
///
/// The skeleton's promises:
/// - It has as many 8-connected components as the shape, each inside its own, and as many holes (4-connected
///   pieces of ground), each around its own.
/// - It is one pixel wide: removing any pixel breaks a line, opens a hole or shortens a line at its end.
/// - It lies on the shape's middle: on the pixels nearest to the points that are equally far from the shape's
///   edges on either side. Lines end about where the largest disc in the shape touches its end.
/// - It has no spurs from ragged edges. A branch that leaves another line and stays shorter than the half
///   width of the shape there, or sticks out of that line's own body by less than half of it, is none.
/// - Thinning it again changes nothing.
/// - Turning it by quarters or mirroring it moves lines and their ends by a pixel at most, but a branch
///   that is just long enough may go.
///
/// Pixels are taken away in the order of their distance from the ground (C. Pudney, "Distance-ordered
/// homotopic thinning", 1998); those of the medial axis, found by the angle between the directions to the
/// nearest ground (W. Hesselink and J. Roerdink, "Euclidean skeletons of digital image and volume data in
/// linear time by the integer medial axis transform", 2008), are held back.
///
/// An object holds a bitmap of its own and belongs to one thread at a time.
class TARVEX_API CSkeleton {
  public:
    CSkeleton();
    CSkeleton(const CSkeleton&) = delete;
    CSkeleton& operator=(const CSkeleton&) = delete;
    CSkeleton(CSkeleton&& other) noexcept;
    CSkeleton& operator=(CSkeleton&& other) noexcept;
    ~CSkeleton();

    /// Makes a monochrome copy of the bitmap, 1 (white) where it is set, for `DoSkeleton` to thin, in place
    /// of any earlier one. The bitmap itself is only read and stays the caller's, at 1 or 32 bits and of
    /// any size. Returns the copy, which stays the object's (see `Bitmap`); null, and the object is empty,
    /// when the handle is not such a bitmap's or there is no memory.
    HBITMAP MakeBitmapMono(HBITMAP bitmap);

    /// Thins the copy in place: `Bitmap` then holds the skeleton, white on black, as CImgProc::InitMat loads
    /// it. False when there is no copy. Thinning what is thin already changes nothing.
    ///
    /// Time is proportional to the picture's pixels, whatever the width of its strokes; memory is at most
    /// about 14 bytes for every pixel, most of it only for the shape's. Raises CMemoryException, or another
    /// std::bad_alloc, with the copy as it was, when memory runs out or there are 2^32 pixels.
    bool DoSkeleton();

    /// The bitmap at hand: the copy, or once thinned its skeleton. 1 bit, bottom-up, black and white. It is
    /// deleted with the object, by the next `MakeBitmapMono` or `InputMono`, and by moving from the object.
    /// Null when there is none.
    HBITMAP Bitmap() const;

    /// Thins a bitmap of 1 or 32 bits in place: skeleton pixels become white, all others black. False, and
    /// nothing changed, when the handle is not such a bitmap's.
    static bool DoSkeleton(HBITMAP bitmap);

    /// Takes a mask, as `MakeBitmapMono` does. True unless that failed.
    bool InputMono(HBITMAP mask);

    /// Empties `out`, thins the mask if that has not been done, and fills `out` with the centre lines, one
    /// Bezier contour for each branch between ends and junctions. False, with `out` empty, when there is no
    /// mask.
    ///
    /// A point of a line is a pixel's column and row, moved from there, by a pixel at most, to the middle
    /// between the shape's edges. Branches that meet in a junction have their ends in one and the same point,
    /// bit for bit. A free end is set back from the shape's tip by half the width. A closed line ends with
    /// its first anchor. A piece that is hardly longer than wide is a contour of two equal nodes. Curves
    /// stay within about half a pixel of the middle; a corner stands where the straight pieces beside it
    /// meet.
    bool Output(CPolyPolyBezier& out);

  private:
    struct Mask;

    std::unique_ptr<Mask> m_mask;
};

}  // namespace tarvex
