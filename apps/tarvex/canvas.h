// A picture to draw shapes on, white at first: the library's own drawing, made smooth by drawing several
// times larger and averaging.
#pragma once

#include <memory>
#include <type_traits>

#include "tarvex/containers.h"
#include "tarvex/picture.h"
#include "tarvex/platform.h"
#include "tarvex/scaledraw.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

class Canvas {
  public:
    /// A canvas for a picture of width x height pixels, `samples` x `samples` of which make one pixel.
    /// Raises std::bad_alloc.
    Canvas(int width, int height, int samples);

    /// Shows the part of the plane that begins at `corner`, `scale` pixels to the unit.
    void SetView(const DPOINT& corner, double scale);

    /// Fills the shape. Open contours are filled as though closed.
    void Fill(const CPolyPolyBezier& shape, const Rgba& colour, FillRule rule);
    /// Draws lines along the contours, `width` pixels wide, with round ends and corners; at least a sample
    /// wide.
    void Stroke(const CPolyPolyBezier& shape, const Rgba& colour, double width);

    /// What was drawn, as grey when it has no colour.
    Picture Average() const;

  private:
    struct DeleteBitmap {
        using pointer = HBITMAP;
        void operator()(HBITMAP handle) const { DeleteObject(handle); }
    };
    struct DeleteContext {
        using pointer = HDC;
        void operator()(HDC handle) const { DeleteDC(handle); }
    };
    /// A bitmap selected into a context of its own.
    struct Layer {
        std::unique_ptr<HBITMAP, DeleteBitmap> bitmap;
        std::unique_ptr<HDC, DeleteContext> dc;
        std::uint8_t* bits = nullptr;
        std::size_t stride = 0;
    };
    enum class Part { Interior, Outline };

    static Layer MakeLayer(int width, int height, int depth);
    /// Draws in a colour, by way of the mask when it is translucent.
    void Paint(const CPolyPolyBezier& shape, Part part, const Rgba& colour, int penWidth, int fillMode);
    void Draw(const Layer& layer, const CPolyPolyBezier& shape, Part part, COLORREF colour, int penWidth);
    void BlendMask(const Rgba& colour);

    int m_width;
    int m_height;
    int m_samples;
    CScaleDraw m_view;
    Layer m_colours;
    Layer m_mask;  ///< one bit a sample, made when it is first needed; clear between drawings
    CArray<tagPOINT, tagPOINT> m_points;
    RECT m_drawn{};  ///< around all points of the last shape
};

}  // namespace tarvex::app
