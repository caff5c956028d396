// What becomes of every operation when memory runs out at any of its allocations: the exception comes out, or
// the answer is the documented refusal, or, where there was another way, the right one; nothing leaks; what
// was to stay stayed; and the same objects do the job once there is memory again.
#include "support/precompiled.h"

#include "memory/allocations.h"
#include "memory/drawings.h"
#include "platform/handles.h"
#include "tarvex/tarvex.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARVEX_IS_SLOW
#endif
#endif

namespace tarvex::test {
namespace {

/// One call on inputs of its own.
struct Operation {
    std::function<bool()> act;                 ///< whether there is a result
    std::function<std::string()> result;       ///< its bytes
    std::function<void()> expectKept = [] {};  ///< what holds after a failure
    bool isRepeatable = true;                  ///< whether the call can be made again after a failure
};

using Make = std::function<Operation()>;

struct Outcome {
    long asked = 0;
    bool hasFailed = false;
    bool isDone = false;
    std::string result;
};

/// Makes and runs the operation with the n-th allocation failing, and looks at what a failure left.
Outcome Try(const Make& make, long n, Shortage shortage, const std::string* expected) {
    Outcome outcome;
    const Operation operation = make();
    FailFrom(n, shortage);
    try {
        outcome.isDone = operation.act();
    } catch (const std::bad_alloc&) {
        outcome.isDone = false;
    }
    outcome.asked = EndShortage();
    outcome.hasFailed = HasFailed();
    if (outcome.isDone) outcome.result = operation.result();
    if (expected == nullptr) return outcome;
    if (!outcome.isDone) operation.expectKept();
    if (!outcome.isDone && operation.isRepeatable) {
        EXPECT_TRUE(operation.act()) << "the same objects, with memory again";
        outcome.result = operation.result();
    }
    if (outcome.isDone || operation.isRepeatable) {
        EXPECT_TRUE(outcome.result == *expected) << "another result than with enough memory";
    }
    return outcome;
}

/// The table of handles grows until this many have been deleted; after that, an operation asks for the same
/// memory each time.
void FillTheTableOfHandles() {
    for (int i = 0; i < 2000; ++i) DeleteObject(CreateSolidBrush(0));
}

/// Fails each allocation of the operation in turn; of many, all of the first hundreds and a share of the
/// rest.
void ExpectShortagesAreSurvived(const Make& make) {
#ifdef TARVEX_IS_SLOW
    constexpr long all = 60, most = 90;
#else
    constexpr long all = 200, most = 280;
#endif
    FillTheTableOfHandles();
    Try(make, 0, Shortage::once, nullptr);  // what is allocated once and for all
    const Outcome usual = Try(make, 0, Shortage::once, nullptr);
    ASSERT_TRUE(usual.isDone);
    ASSERT_GT(usual.asked, 0);
    const long stride = std::max(1L, (usual.asked - all) / (most - all));
    long refusals = 0;
    for (long n = 1; n <= usual.asked; n += n < all ? 1 : stride) {
        for (const Shortage shortage : {Shortage::once, Shortage::lasting}) {
            SCOPED_TRACE(::testing::Message() << "allocation " << n << " of " << usual.asked
                                              << (shortage == Shortage::once ? "" : " and all after it"));
            const long before = LiveBlocks();
            bool isDone = false, hasFailed = false;
            {
                const Outcome outcome = Try(make, n, shortage, &usual.result);
                isDone = outcome.isDone;
                hasFailed = outcome.hasFailed;
            }
            if (::testing::Test::HasFailure()) return;  // its message takes blocks
            ASSERT_EQ(LiveBlocks(), before) << "blocks are left";
            EXPECT_TRUE(hasFailed);
            refusals += isDone ? 0 : 1;
        }
    }
    EXPECT_GT(refusals, 0) << "no failure showed";
}

/// An operation on a state that lives as long as it.
template <class State, class Act, class Result>
Operation On(std::shared_ptr<State> state, Act act, Result result) {
    return {[state, act] { return act(*state); }, [state, result] { return result(*state); }};
}

template <class Array, class Values>
void Fill(Array& array, const Values& values) {
    for (const auto& value : values) array.Add(value);
}

// ---- Tracing

struct Tracing {
    GreyPicture picture = RingAndBar(30, 24);
    UniqueBitmap bitmap = MonoBitmap(picture);
    UniqueBitmap colours = ColourBitmap(60, 50);
    CPolyPolyBezier out;
    CPolyPolyWidth widths;
    std::string bytes;
};

Operation OnPicture(std::function<bool(Tracing&)> act) {
    return On(std::make_shared<Tracing>(), act,
              [](Tracing& t) { return t.bytes + Bytes(t.out) + Bytes(t.widths); });
}

bool TraceColourRegions(Tracing& t) {
    std::vector<std::uint16_t> labels(60 * 50);
    for (std::size_t i = 0; i < labels.size(); ++i)
        labels[i] = static_cast<std::uint16_t>((i % 60 / 15 + i / 60 / 20) % 3);
    const auto regions = TraceRegions({labels.data(), 60, 50, 60}, {});
    t.bytes.clear();
    for (const PaintedRegions& region : regions) t.bytes += Bytes(region.outlines);
    return !regions.empty();
}

bool ReduceColours(Tracing& t) {
    RGBQUAD palette[8]{};
    int count = 8;
    CColorReduction(t.colours.Get()).DoColorReduction(palette, count, 0);
    t.bytes = Bytes(t.colours) + std::string(reinterpret_cast<const char*>(palette), sizeof palette);
    return count == 3;
}

TEST(FailingAllocation, IsSurvivedByTracers) {
    const std::pair<const char*, std::function<bool(Tracing&)>> tracers[] = {
        {"outlines", [](Tracing& t) { return TraceOutlines(t.picture.View(), {}, t.out); }},
        {"enlarged outlines",
         [](Tracing& t) {
             OutlineOptions options;
             options.detail = 2;
             return TraceOutlines(t.picture.View(), options, t.out);
         }},
        {"shape trace",
         [](Tracing& t) {
             t.out.RemoveAll();
             return CShapeTrace(t.bitmap.Get()).DoTrace(t.out, 10);
         }},
        {"colour region",
         [](Tracing& t) {
             CAutoTrace tracer(t.colours.Get(), 96);
             auto cut = std::make_unique<CArray<tagPOINT, tagPOINT>>();
             cut->Add({0, 28});
             cut->Add({59, 25});
             tracer.CutPolylines().Add(std::move(cut));
             tracer.DoTrace(20, 30, nullptr, 0, false, false, false);
             t.bytes = Bytes(tracer.TracedLines());
             return !tracer.TracedLines().IsEmpty();
         }},
        {"colour regions", TraceColourRegions},
        {"skeleton",
         [](Tracing& t) {
             CSkeleton skeleton;
             return skeleton.InputMono(t.bitmap.Get()) && skeleton.Output(t.out);
         }},
        {"centre lines",
         [](Tracing& t) { return CImageTrace(t.picture.View()).DoTrace({}, t.out, t.widths); }},
        {"edges", [](Tracing& t) {
             CEdgeDetect edges;
             return edges.Detect(t.picture.View()) && edges.Output(t.out);
         }}};
    for (const auto& [name, act] : tracers) {
        SCOPED_TRACE(name);
        ExpectShortagesAreSurvived([&act = act] { return OnPicture(act); });
    }
    SCOPED_TRACE("colour reduction");
    ExpectShortagesAreSurvived([] {
        Operation operation = OnPicture(ReduceColours);
        operation.isRepeatable = false;  // a picture half recoloured is another picture
        return operation;
    });
}

// ---- Combining

struct Shapes {
    CPolyPolyBezier a = Disc();
    CPolyPolyBezier b = Frame();
    const std::string givenA = Bytes(a);
    const std::string givenB = Bytes(b);
};

TEST(FailingAllocation, LeavesShapesAsTheyWereGiven) {
    for (const bool byRaster : {false, true}) {
        for (const int op : {SHAPING_DIFFERENCE, SHAPING_INTERSECTION, SHAPING_XOR, SHAPING_UNION}) {
            SCOPED_TRACE(::testing::Message() << (byRaster ? "raster " : "vector ") << op);
            ExpectShortagesAreSurvived([=] {
                const auto shapes = std::make_shared<Shapes>();
                Operation operation = On(
                    shapes,
                    [=](Shapes& s) {
                        return byRaster ? PolyPolyBezierBmpShaping(op, s.a, s.b, ALTERNATE, ALTERNATE)
                                        : PolyPolyBezierShaping(op, s.a, s.b);
                    },
                    [](Shapes& s) { return Bytes(s.a); });
                operation.expectKept = [=] {
                    EXPECT_TRUE(Bytes(shapes->a) == shapes->givenA) << "the first shape changed";
                    EXPECT_TRUE(!byRaster || Bytes(shapes->b) == shapes->givenB)
                        << "the second shape changed";
                    shapes->b = Frame();  // without the nodes that it may have got
                };
                return operation;
            });
        }
    }
}

struct Sets {
    ClipPolygon a, b, result;

    Sets() {
        std::vector<DPOINT> star, square{{1, 1}, {9, 2}, {8, 9}, {2, 8}};
        for (int i = 0; i < 7; ++i) star.push_back({5 + 5 * std::cos(i * 2.7), 5 + 5 * std::sin(i * 2.7)});
        AddClipContour(a, {static_cast<std::int32_t>(star.size()), star.data()}, 0);
        AddClipContour(b, {static_cast<std::int32_t>(square.size()), square.data()}, 0);
        AddClipContour(result, {3, star.data()}, 0);
    }
    Sets(const Sets&) = delete;
    Sets& operator=(const Sets&) = delete;
    ~Sets() {
        for (ClipPolygon* set : {&a, &b, &result}) FreeClipPolygon(*set);
    }
    std::string Text() const { return WriteClipPolygon(result, ClipHoleFlags::written); }
};

/// The result of an operation is empty afterwards, a set to add to as it was, one to read into either.
TEST(FailingAllocation, LeavesNoHalfPolygons) {
    ExpectShortagesAreSurvived([] {
        const auto sets = std::make_shared<Sets>();
        Operation operation = On(
            sets,
            [](Sets& s) {
                ClipPolygons(SHAPING_XOR, s.a, s.b, s.result);
                return true;
            },
            [](Sets& s) { return s.Text(); });
        operation.expectKept = [sets] { EXPECT_EQ(sets->result.contourCount, 0) << "a result"; };
        return operation;
    });
    for (const bool isText : {false, true}) {
        ExpectShortagesAreSurvived([isText] {
            const auto sets = std::make_shared<Sets>();
            Operation operation = On(
                sets,
                [isText](Sets& s) {
                    if (!isText) {
                        AddClipContour(s.result, s.b.contours[0], 1);
                        return true;
                    }
                    return ReadClipPolygon(WriteClipPolygon(s.b, ClipHoleFlags::written),
                                           ClipHoleFlags::written, s.result);
                },
                [](Sets& s) { return s.Text(); });
            const std::string given = sets->Text();
            operation.expectKept = [=] {
                const std::string left = sets->Text();
                EXPECT_TRUE(left == given || (isText && sets->result.contourCount == 0)) << left;
            };
            return operation;
        });
    }
}

// ---- Lines and contours

struct Lines {
    CArray<DPOINT, DPOINT> points;
    CPolyPolyBezier shape = Frame();
    std::string bytes;

    Lines() {
        for (int i = 0; i < 60; ++i)
            points.Add({40 * std::cos(i * 0.1), 30 * std::sin(i * 0.1) + 4 * std::sin(i * 0.9)});
        points.Add(DPOINT(points[0]));
    }
};

bool MeasureContours(Lines& l) {
    CArray<BEZIERHOLEINFO, BEZIERHOLEINFO> info;
    GetBezierHoleInfo(l.shape, info);
    CArray<DLINE, DLINE> lines;
    CArray<BPOINT, BPOINT> spiral, twin;
    CArray<DPOINT, DPOINT> even;
    const SPIRAL around{{0, 0}, 1, 20, 3, 0, true};
    const bool done = GetDefaultSatinInclinations(l.shape[0], l.shape[1], 20, lines) &&
                      GetSymmetricalSpiralBPoints(around, 0.1, spiral, twin);
    CBPointArrayMath({l.shape[0].GetData(), 5}).GetEvenPoints(30, even);
    CEnvelop envelope;
    envelope.env() = {0, 0, 100, 100};
    envelope.SetType(3, 10);
    DRECT frame{};
    l.shape.CalcFrame(frame, 1);
    l.bytes =
        Bytes(info) + Bytes(lines) + Bytes(spiral) + Bytes(twin) + Bytes(even) + Bytes(envelope.arcTop());
    return done;
}

TEST(FailingAllocation, IsSurvivedByWhatWorksOnContours) {
    const std::pair<const char*, std::function<bool(Lines&)>> works[] = {
        {"fit",
         [](Lines& l) {
             CArray<BPOINT, BPOINT> nodes;
             CArray<BEZIER, BEZIER> segments;
             FitCurve(l.points.GetData(), l.points.GetSize(), &nodes, 0.5);
             FitCurve(l.points.GetData(), l.points.GetSize(), &segments, 0.5);
             l.bytes = Bytes(nodes) + std::to_string(segments.GetSize());
             return true;
         }},
        {"flatten",
         [](Lines& l) {
             CArray<DPOINT, DPOINT> line, samples;
             GetPolyline(l.shape[0], line, 0.1);
             CBezier({0, 0}, {10, 40}, {50, 20}, {60, 0}).GetPolylineEx(samples);
             l.bytes = Bytes(line) + Bytes(samples);
             return true;
         }},
        {"offset",
         [](Lines& l) {
             l.bytes = Bytes(ShrinkPolyline(l.points, 5)) + Bytes(ShrinkBezier(l.shape, -7)) +
                       Bytes(RemovePolylineLoops(l.points, 2));
             return true;
         }},
        {"measures and stitches", MeasureContours},
        {"break-up",
         [](Lines& l) {
             ShapeBreakUpOptions options;
             options.pixelsPerUnit = 0.15;  // otherwise another resolution does instead
             const auto islands = BreakUpShape(l.shape, options);
             l.bytes.clear();
             for (const IslandBreakUp& island : islands) {
                 if (island.end != BreakUpEnd::Done) return false;
                 for (const StitchRegion& region : island.regions) {
                     for (const auto& rail : {region.first, region.second})
                         l.bytes.append(reinterpret_cast<const char*>(rail.data()),
                                        rail.size() * sizeof(DPOINT));
                 }
             }
             return !islands.empty();
         }},
#ifdef TARVEX_HAS_FONTS
        {"text",
         [](Lines& l) {
             tagLOGFONTW font{};
             font.lfHeight = -200;
             std::copy_n(L"DejaVu Sans", 11, font.lfFaceName);
             CPolyPolyBezier out;
             DPOINT pen{};
             const bool done = GetTTOutlinePoints(font, 'B', out, pen, 1) != 0;
             l.bytes = Bytes(out);
             return done;
         }},
#endif
    };
    for (const auto& [name, act] : works) {
        SCOPED_TRACE(name);
        ExpectShortagesAreSurvived(
            [&act = act] { return On(std::make_shared<Lines>(), act, [](Lines& l) { return l.bytes; }); });
    }
}

// ---- Containers

struct Containers {
    CArray<DPOINT, DPOINT> points;
    CPolyPolyBezier list = Disc();
    CBitMatrix bits{9, 9};
    CByteMatrix cells{9, 9};
    std::vector<std::byte> archived;

    Containers() {
        for (int i = 0; i < 20; ++i) points.Add({i * 1.0, 2});
        CArray<DPOINT, DPOINT> stored;
        for (int i = 0; i < 50; ++i) stored.Add({3, i * 1.0});
        CArchive sink(archived);
        stored.Serialize(sink);
        bits.Set(3, 4);
        cells.Set(3, 4, 7);
    }
    std::string State() const {
        return Bytes(points) + Bytes(list) + std::to_string(bits.SizeX()) + std::to_string(bits.Get(3, 4)) +
               std::to_string(cells.SizeX()) + std::to_string(cells.Get(3, 4));
    }
};

TEST(FailingAllocation, LeavesContainersAsTheyWere) {
    const std::pair<const char*, std::function<void(Containers&)>> calls[] = {
        {"SetAtGrow",
         [](Containers& c) {
             c.points.SetAtGrow(400, {1, 1});
         }},
        {"Add",
         [](Containers& c) {
             CArray<DPOINT, DPOINT> other;
             other.SetSize(2000);
             c.points.Append(other);
         }},
        {"InsertAt", [](Containers& c) { c.points.InsertAt(3, &c.points); }},
        {"InsertAt of a value",
         [](Containers& c) {
             c.points.InsertAt(3, DPOINT{7, 7}, 500);
         }},
        {"Serialize",
         [](Containers& c) {
             CArchive source{std::span<const std::byte>(c.archived)};
             c.points.Serialize(source);
         }},
        {"Add to a list", [](Containers& c) { c.list.Add(std::make_unique<CArray<BPOINT, BPOINT>>()); }},
        {"CBitMatrix::SetSize", [](Containers& c) { c.bits.SetSize(100, 80); }},
        {"CByteMatrix::SetSize", [](Containers& c) { c.cells.SetSize(100, 80); }},
    };
    for (const auto& [name, call] : calls) {
        SCOPED_TRACE(name);
        ExpectShortagesAreSurvived([&call = call] {
            const auto containers = std::make_shared<Containers>();
            Operation operation = On(
                containers,
                [&call](Containers& c) {
                    call(c);
                    return true;
                },
                [](Containers& c) { return c.State(); });
            const std::string given = containers->State();
            operation.expectKept = [=] { EXPECT_TRUE(containers->State() == given) << "it changed"; };
            return operation;
        });
    }
}

/// Copying a list empties it first, so what a failure leaves is short, but whole contours.
TEST(FailingAllocation, LeavesListsUsable) {
    ExpectShortagesAreSurvived([] {
        const auto lists = std::make_shared<std::pair<CPolyPolyBezier, CPolyPolyBezier>>();
        lists->first = Disc();
        lists->second = Frame();
        return On(
            lists,
            [](auto& pair) {
                pair.first.Copy(pair.second);
                return true;
            },
            [](auto& pair) { return Bytes(pair.first); });
    });
}

}  // namespace
}  // namespace tarvex::test
