// The picture becomes a 32-bit bitmap, in which the library's region tracer works. Its outlines run through
// the centres of pixels, which lie half a pixel from the pixels' corners.
#include "tarvex/region_command.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <type_traits>

#include "tarvex/autotrace.h"
#include "tarvex/breakup_command.h"
#include "tarvex/input.h"
#include "tarvex/json_writer.h"
#include "tarvex/output.h"
#include "tarvex/program_error.h"
#include "tarvex/raster.h"
#include "tarvex/svg_writer.h"

namespace tarvex::app {

namespace {

constexpr double CENTRE = 0.5;
constexpr double SCALE = 96;

struct DeleteBitmap {
    using pointer = HBITMAP;
    void operator()(HBITMAP handle) const { DeleteObject(handle); }
};
using Bitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteBitmap>;

std::uint8_t OverWhite(std::uint8_t level, std::uint8_t alpha) {
    return static_cast<std::uint8_t>((level * alpha + 255 * (255 - alpha) + 127) / 255);
}

/// The picture on white.
Bitmap MakeBitmap(const Picture& picture) {
    Bitmap bitmap(CImgProc::CreateBitmap32(picture.width, picture.height));
    BITMAP description{};
    if (!bitmap || GetObject(bitmap.get(), static_cast<int>(sizeof description), &description) == 0)
        throw std::bad_alloc();
    auto* pixel = static_cast<RGBQUAD*>(description.bmBits);
    for (int y = picture.height - 1; y >= 0; --y) {
        for (int x = 0; x < picture.width; ++x) {
            const Rgba c = picture.At(x, y);
            *pixel++ = {OverWhite(c.blue, c.alpha), OverWhite(c.green, c.alpha), OverWhite(c.red, c.alpha),
                        0};
        }
    }
    return bitmap;
}

std::vector<DPOINT> Placed(const CArray<DPOINT, DPOINT>& line) {
    std::vector<DPOINT> points;
    for (const DPOINT& p : line) points.push_back({p.x + CENTRE, p.y + CENTRE});
    return points;
}

std::vector<std::vector<BPOINT>> Contours(const CPolyPolyDPoint& lines) {
    std::vector<std::vector<BPOINT>> contours;
    for (int i = 0; i < lines.GetCount(); ++i) {
        contours.emplace_back();
        for (const DPOINT& p : Placed(lines[i])) {
            BPOINT node;
            node.cp1 = node.pt = node.cp2 = p;
            contours.back().push_back(node);
        }
    }
    return contours;
}

std::string WriteOutlines(const CPolyPolyDPoint& lines, const Picture& picture, const std::string& colour,
                          StitchFormat format) {
    const auto contours = Contours(lines);
    const std::vector<ContourView> views(contours.begin(), contours.end());
    const auto width = static_cast<double>(picture.width), height = static_cast<double>(picture.height);
    if (format == StitchFormat::Json) return WriteJson({width, height, 1}, views);
    const SvgShape shape{views, Paint::Fill, colour, 1};
    return WriteSvg({width, height, 1}, {&shape, 1});
}

/// What the break-up left in the tracer, as a design of one island.
StitchDesign DesignOf(const CPolyPolyDPoint& rails, const CPolyPolyInclination& positions,
                      const Picture& picture, const std::string& colour) {
    IslandBreakUp island;
    island.end = rails.IsEmpty() ? BreakUpEnd::NotSplit : BreakUpEnd::Done;
    island.pixelsPerUnit = 1;
    for (int i = 0; i + 1 < rails.GetCount(); i += 2) {
        StitchRegion region{Placed(rails[i]), Placed(rails[i + 1]), {}, false};
        region.isRing =
            region.first.front() == region.first.back() && region.second.front() == region.second.back();
        for (int k = 0; k < positions[i].GetSize(); ++k)
            region.inclinations.emplace_back(std::lround(positions[i][k] * rails[i].GetSize()),
                                             std::lround(positions[i + 1][k] * rails[i + 1].GetSize()));
        island.regions.push_back(std::move(region));
    }
    StitchDesign design;
    design.width = picture.width;
    design.height = picture.height;
    design.shapes.push_back({colour, {std::move(island)}});
    return design;
}

std::string Hex(const RGBQUAD& colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour.rgbRed, colour.rgbGreen, colour.rgbBlue);
    return text;
}

}  // namespace

int RunRegion(const RegionOptions& options) {
    CheckOutput(options.output, options.input);
    const Picture picture = ReadPicture(options.input, {options.maxPixels});
    if (options.seedX >= picture.width || options.seedY >= picture.height) {
        throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                           "the seed lies outside the picture of " + std::to_string(picture.width) + " x " +
                               std::to_string(picture.height) + " pixels");
    }
    const Bitmap bitmap = MakeBitmap(picture);
    CAutoTrace tracer(bitmap.get(), SCALE);
    tracer.SetFillFilter(options.isSmooth);
    const std::string colour = Hex(tracer.GetPixel(options.seedX, options.seedY));
    CPolyPolyInclination positions;
    {
        const InterruptsStopBreakUp interrupts(options.interrupts);
        tracer.DoTrace(options.seedX, options.seedY, options.isBrokenUp ? &positions : nullptr,
                       options.tolerance * options.tolerance, false, false, false);
    }
    if (tracer.TracedLines().IsEmpty()) {
        throw ProgramError(ExitStatus::NoResult, InputName(options.input),
                           options.isBrokenUp ? "the region could not be broken up"
                                              : "the region around the seed is too small to trace");
    }
    if (!options.isBrokenUp) {
        WriteOutput(options.output, WriteOutlines(tracer.TracedLines(), picture, colour, options.format));
        return 0;
    }
    const StitchDesign design = DesignOf(tracer.TracedLines(), positions, picture, colour);
    WriteOutput(options.output, WriteStitches(design, options.format, 12));
    return 0;
}

}  // namespace tarvex::app
