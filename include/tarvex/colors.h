// Pictures reduced to few colours, and colours in other terms than red, green and blue.
//
// Pictures are 32-bit bitmaps as raster.h describes them: pixels of four bytes blue, green, red, reserved,
// rows from the bottom up without gaps, (0, 0) the top left pixel. Reserved bytes are neither read into a
// colour nor written.
#pragma once

#include <memory>

#include "tarvex/platform.h"

namespace tarvex {

/// Reduces a picture to the colours that fill it, so that it can be traced region by region:
///
///     CColorReduction reduction(bitmap);
///     RGBQUAD palette[8];
///     int count = 8;
///     reduction.DoColorReduction(palette, count, 0);
///
/// What "filling" means: around every third pixel of every third row, the colour that most of the 7 x 7
/// pixels of a smoothed copy have is a sample; samples less than 1200 apart gather in clusters; clusters are
/// merged step by step until they are some thousands apart; the largest ones are the palette. Every pixel
/// then gets a palette colour, and twice the one that most of the 5 x 5 pixels around it have, which takes
/// away specks, the soft seams between colours, and lines of one or two pixels.
///
/// The distance of two colours is 3 (dR)^2 + 4 (dG)^2 + 2 (dB)^2, a whole number up to 585225. Colours less
/// than 390 apart are almost equal.
///
/// Pictures whose shorter side is below 100 pixels are worked on at four times their size, those below 250
/// at twice, pixels repeated; so that thin features of small pictures survive. At the end one pixel of every
/// block is kept.
///
/// An object serves for one reduction: the filter uses the smoothed copy as scratch, so a second call would
/// sample what the first one left there. The caller's bitmap must outlive the object, and no other thread
/// may use either meanwhile. The cost is proportional to the number of pixels.
class TARVEX_API CColorReduction {
  public:
    /// A picture in memory that is somebody else's. Coordinates are clamped into it when pixels are read.
    struct IMAGE {
        RGBQUAD* pixels = nullptr;  ///< the bottom row first
        int width = 0;
        int height = 0;
    };

    /// Prepares the working picture and its smoothed copy, the mean image. A handle that is null, not a
    /// bitmap's or of another depth than 32 gives an object that does nothing. Raises the memory exception
    /// when there is no room for the copies.
    explicit CColorReduction(HBITMAP bitmap);
    CColorReduction(const CColorReduction&) = delete;
    CColorReduction& operator=(const CColorReduction&) = delete;
    ~CColorReduction();

    /// Reduces the picture to at most `count` colours, which `palette` has room for, and sets `count` to how
    /// many there are; the most frequent comes first, reserved bytes are 0.
    ///
    /// `level` (0 is usual, larger merges more) sets how far apart clusters of colours must be in the end:
    /// 3500 + 100 level, counted in 64 bits and then kept within the range of int. A picture smaller than
    /// what sampling needs (seven pixels of the working picture each way), or one in which no colour fills
    /// half of any window, has no palette: then `count` is 0 and all pixels stay as they are. So it is
    /// for a null palette or a count below 1. Raises the memory exception when the result of a picture that
    /// was enlarged cannot be drawn back, as when the bitmap is selected into a context meanwhile.
    ///
    /// What a host may rely on to the last bit: samples are taken row by row, y = 3, 6, ... below height - 3,
    /// and x likewise. A sample goes to its nearest cluster, the earlier of equally near ones, if that is
    /// less than 1200 away, and moves the cluster's colour to the rounded mean; otherwise it begins a
    /// cluster, of which there are at most 999. Merging goes through the limits 1200, 1230, 1260, ... below
    /// the threshold; at each, every cluster in turn takes in all later ones nearer than the limit. In its
    /// turn a cluster's colour and count are those from before the turn: each of several merges computes the
    /// weighted mean anew from them, and the last one decides the colour, while the counts add up. A pixel
    /// gets the first palette colour less than 1200 away, or if there is none the one nearest to its colour
    /// in the mean image.
    void DoColorReduction(RGBQUAD* palette, int& count, int level);

    // -----------------------------------------------------------------------------------------
    // The steps of the reduction, on the working picture and the mean image

    /// Samples the mean image and gathers the samples into at most `count` colours.
    void GetColorPalette(RGBQUAD* palette, int& count);
    /// Gives every pixel of the working picture a palette colour, then filters it by `Majority`. Without a
    /// palette nothing happens.
    void ReplaceColors(const RGBQUAD* palette, int count);
    /// Twice: gives every pixel the colour that most of the 5 x 5 pixels around it have. The mean image is
    /// left with the picture between the two passes.
    void Majority();
    /// Fills the mean image with the mean of the 3 x 3 pixels around each pixel of the working picture.
    void CreateMeanImage();
    /// Fills the mean image with the median of the 3 x 3 pixels around each pixel, each channel by itself. No
    /// part of the reduction.
    void CreateMedianImage();

    /// The working picture: the bitmap's own pixels, or the enlarged copy.
    const IMAGE& Image() const { return m_image; }
    const IMAGE& MeanImage() const { return m_meanImage; }
    /// 1, 2 or 4.
    int Factor() const { return m_factor; }

    // -----------------------------------------------------------------------------------------
    // Pixels

    /// Whether red, green and blue are equal.
    static bool IsEqual(RGBQUAD a, RGBQUAD b);
    /// Whether the colours' distance is below 390.
    static bool IsAlmostEqual(RGBQUAD a, RGBQUAD b);

    /// The pixel nearest to (x, y); black for an image without pixels.
    static RGBQUAD GetPixel(const IMAGE& image, int x, int y);
    static void GetPixel(const IMAGE& image, int x, int y, int& r, int& g, int& b);
    /// Sets a pixel's colour; the reserved byte stays. Nothing outside the image. Of integers the lowest
    /// eight bits count.
    static void SetPixel(const IMAGE& image, int x, int y, RGBQUAD color);
    static void SetPixel(const IMAGE& image, int x, int y, int r, int g, int b);

    /// Each channel is the sum over the 3 x 3 pixels around, divided by 9 and truncated.
    static RGBQUAD GetMeanPixel(const IMAGE& image, int x, int y);
    /// Each channel is the fifth largest of the 3 x 3 pixels around.
    static RGBQUAD GetMedianPixel(const IMAGE& image, int x, int y);

    /// The most frequent colour of a window of `size` pixels a side, 1 to 7 (above that, 7; an even size
    /// counts as the next larger odd one). Its pixels are visited row by row; each joins the first class
    /// whose representative is almost equal to it, or begins a class. The largest class wins, the earliest of
    /// equally large ones.
    ///
    /// 1 with the winner's representative in r, g and b, or 0, and nothing in them, when its count is below
    /// `size` * `size` / 2 (an integer division; so always for a size above 9).
    static int GetMajorityPixel(const IMAGE& image, int x, int y, int size, int& r, int& g, int& b);
    /// Sets pixel (x, y) of `to` to the winner of the window of `from`, however small its count.
    static void SetMajorityPixel(const IMAGE& to, const IMAGE& from, int x, int y, int size);

    /// 1 when all pixels of the square ring at distance `radius` around (x, y) have the very colour of its
    /// top left one, else 0. That colour is in r, g and b either way. A negative radius counts as 0, the
    /// pixel alone.
    static int AreRoundPixelsSame(const IMAGE& image, int x, int y, int radius, int& r, int& g, int& b);
    /// Paints the part of a rectangle that is inside the image; its right column and bottom row are left out,
    /// as everywhere.
    static void FillRectAreaWithColor(const IMAGE& image, const RECT& area, RGBQUAD color);

    /// Draws all of a bitmap into a rectangle, pixels dropped or repeated but never blended.
    static bool DrawStretchedBitmap(HDC to, HBITMAP bitmap, int x, int y, int width, int height);

  private:
    void CreateBigBitmap(HBITMAP bitmap);
    void CreateSmallBitmap();

    HBITMAP m_hBigBitmap = nullptr;  // owned; null at factor 1
    HBITMAP m_hBitmap = nullptr;     // the caller's
    IMAGE m_image;
    IMAGE m_meanImage;
    int m_factor = 1;
    int m_threshold = 3500;
    std::unique_ptr<RGBQUAD[]> m_meanPixels;
};

// ---------------------------------------------------------------------------------------------
// Colour spaces

/// Cyan, magenta, yellow and black, 0 to 255 each, of a colour of 0 to 255 each. Black takes all that the
/// three inks have in common; results are truncated, not rounded. Pure black is (0, 0, 0, 255). Channels
/// outside 0 to 255 are computed with as they are, and the results clamped into 0 to 255.
TARVEX_API void RGB2CMYK(int r, int g, int b, int& c, int& m, int& y, int& k);

/// Hue in degrees, lightness and saturation from 0 to 1. The channels are clamped into 0 to 255 first.
///
/// The hue is shifted by 60 degrees against the usual wheel, and HLS2RGB shifts it back: pure red is 60, pure
/// green 180, pure blue 300, and a grey gets 60. Reds that lean to blue are below 60, down to 0 for magenta;
/// so hues of this pair go with each other only.
TARVEX_API void RGB2HLS(int r, int g, int b, double& h, double& l, double& s);

/// The colour of a hue as RGB2HLS gives it, rounded to 0 to 255; a colour that has been through both comes
/// back unchanged. The hue is clamped into 0 to 360, lightness and saturation into 0 to 1; NaN counts
/// as 0.
TARVEX_API void HLS2RGB(double h, double l, double s, int& r, int& g, int& b);

}  // namespace tarvex
