// The lists of contours: what they own and when they let go of it, their indices, and closing.
#include "support/precompiled.h"

#include "tarvex/containers.h"

#include "support/contours.h"
#include "support/property.h"
#include "support/records.h"
#include "tarvex/bezier.h"
#include "tarvex/polygons.h"

namespace tarvex {

namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;
constexpr int kLowest = std::numeric_limits<int>::min(), kHighest = std::numeric_limits<int>::max();

/// An element that tells what happens to it.
class Witness {
  public:
    explicit Witness(int id = 0, std::vector<std::string>* log = nullptr) : m_id(id), m_log(log) { ++alive; }
    ~Witness() {
        Tell("destroyed ");
        --alive;
    }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    void RemoveAll() { Tell("emptied "); }
    void Copy(const Witness& source) { m_id = source.m_id + 100; }
    int Id() const { return m_id; }

    static int alive;

  private:
    void Tell(const char* what) {
        if (m_log != nullptr) m_log->push_back(what + std::to_string(m_id));
    }

    int m_id;
    std::vector<std::string>* m_log;
};
int Witness::alive = 0;

class OwningList : public testing::Test {
  protected:
    using List = COwningList<Witness>;

    ~OwningList() override { EXPECT_EQ(Witness::alive, 0) << "elements outlived their list"; }

    Witness* New(int id) { return new Witness(id, &log); }

    /// A list of witnesses; 0 stands for a null slot.
    void Fill(List& list, std::initializer_list<int> ids) {
        for (int id : ids) list.Add(id == 0 ? nullptr : New(id));
    }

    static std::vector<int> Ids(const List& list) {
        std::vector<int> ids;
        for (int i = 0; i < list.GetCount(); ++i) ids.push_back(list.GetAt(i) == nullptr ? 0 : list[i].Id());
        return ids;
    }

    std::vector<std::string> log;
};

TEST_F(OwningList, ReadingOutOfRangeGivesNull) {
    List list;
    EXPECT_EQ(list.GetAt(0), nullptr);
    Fill(list, {1, 0, 3});
    for (int i : {-1, 1, 3, kLowest, kHighest}) {
        EXPECT_EQ(list.GetAt(i), nullptr) << i;
        EXPECT_EQ(std::as_const(list).GetAt(i), nullptr) << i;
        EXPECT_THROW(list[i], CInvalidArgException) << i;
    }
    EXPECT_EQ(list[2].Id(), 3);
}

TEST_F(OwningList, StoringNowhereOrWhatIsThereDestroysNothingAndLeavesTheElementWithTheCaller) {
    List list;
    Fill(list, {1});
    const std::unique_ptr<Witness> mine(New(9));
    list.SetAt(-1, mine.get());
    for (const int before : {-1, kLowest}) list.SetAtGrow(before, mine.get());
    for (const int past : {1, kHighest}) EXPECT_THROW(list.SetAt(past, mine.get()), CInvalidArgException);
    EXPECT_THROW(list.SetAtGrow(kHighest, mine.get()), CInvalidArgException);
    EXPECT_THROW(list.InsertAt(-1, mine.get()), CInvalidArgException);
    list.SetAt(0, list.GetAt(0));
    list.SetAtGrow(0, list.GetAt(0));
    EXPECT_THAT(Ids(list), ElementsAre(1));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(OwningList, ReplacingDestroysTheElementThatWasThere) {
    List list;
    Fill(list, {1, 0, 3});
    list.SetAt(0, New(11));
    list.SetAt(1, New(12));
    list.SetAtGrow(2, nullptr);
    EXPECT_THAT(Ids(list), ElementsAre(11, 12, 0));
    EXPECT_THAT(log, ElementsAre("destroyed 1", "destroyed 3"));
}

TEST_F(OwningList, GrowingFillsTheGapWithNullSlots) {
    List list;
    list.SetAtGrow(3, New(1));
    EXPECT_THAT(Ids(list), ElementsAre(0, 0, 0, 1));
    list.InsertAt(1, New(2));
    list.InsertAt(7, New(3));
    EXPECT_THAT(Ids(list), ElementsAre(0, 2, 0, 0, 1, 0, 0, 3));
    EXPECT_EQ(list.Add(std::make_unique<Witness>(4)), 8);
    EXPECT_EQ(list[8].Id(), 4);
}

TEST_F(OwningList, RemovingEmptiesThenDestroysAndClosesTheGap) {
    List list;
    Fill(list, {1, 2, 0, 4});
    list.RemoveAt(1);
    list.RemoveAt(1);
    EXPECT_THAT(Ids(list), ElementsAre(1, 4));
    EXPECT_THAT(log, ElementsAre("emptied 2", "destroyed 2"));
    log.clear();
    for (int i : {-1, 2, kLowest, kHighest}) list.RemoveAt(i);
    EXPECT_THAT(Ids(list), ElementsAre(1, 4));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(OwningList, ClearingShrinkingAndDestructionDestroyInOrder) {
    {
        List list;
        Fill(list, {1, 0, 3, 4, 5});
        list.SetSize(3);
        EXPECT_THAT(log, ElementsAre("destroyed 4", "destroyed 5"));
        list.SetSize(4);
        EXPECT_THAT(Ids(list), ElementsAre(1, 0, 3, 0));
        EXPECT_THROW(list.SetSize(-1), CInvalidArgException);
        EXPECT_THROW(list.SetSize(1, -2), CInvalidArgException);
        EXPECT_THAT(Ids(list), ElementsAre(1, 0, 3, 0)) << "as it was before the call";
        log.clear();
        list.RemoveAll();
        EXPECT_THAT(log, ElementsAre("destroyed 1", "destroyed 3"));
        EXPECT_EQ(list.GetCount(), 0);
        list.RemoveAll();
        Fill(list, {6, 7});
        log.clear();
    }
    EXPECT_THAT(log, ElementsAre("destroyed 6", "destroyed 7"));
}

TEST_F(OwningList, CopyIsDeepAndStopsAtTheFirstNullSlot) {
    List source, target;
    Fill(source, {1, 2, 0, 4});
    Fill(target, {9, 8, 7});
    target.Copy(source);
    EXPECT_THAT(Ids(target), ElementsAre(101, 102)) << "copies, made by the elements' own Copy";
    EXPECT_THAT(log, ElementsAre("destroyed 9", "destroyed 8", "destroyed 7"));
    EXPECT_THAT(Ids(source), ElementsAre(1, 2, 0, 4));
    source.Copy(source);
    EXPECT_THAT(Ids(source), ElementsAre(1, 2, 0, 4)) << "onto itself";
    source.Copy(List());
    EXPECT_THAT(Ids(source), IsEmpty());
}

TEST_F(OwningList, MovingHandsOverTheElements) {
    List source, target;
    Fill(source, {1, 2});
    Fill(target, {9});
    target = std::move(source);
    EXPECT_THAT(log, ElementsAre("destroyed 9"));
    EXPECT_EQ(source.GetCount(), 0);
    const List last(std::move(target));
    EXPECT_THAT(Ids(last), ElementsAre(1, 2));
    EXPECT_EQ(target.GetCount(), 0);
}

// --- The six lists and the triples ---------------------------------------------------------------

template <class List>
class ContourList : public testing::Test {};
using Lists = testing::Types<CPolyPolyBezier, COutlines, CPolyPolyDPoint, CPolyPolyPoint, CPolyPolyDWord,
                             CPolyPolyInclination>;
TYPED_TEST_SUITE(ContourList, Lists);

TYPED_TEST(ContourList, CopiesElementsNotPointersAndFreesThem) {
    using Element = std::remove_pointer_t<decltype(TypeParam().GetAt(0))>;
    TypeParam source;
    for (int i = 0; i < 20; ++i) {
        auto element = std::make_unique<Element>();
        element->SetSize(i);
        source.Add(std::move(element));
    }
    TypeParam copy;
    copy.Copy(source);
    ASSERT_EQ(copy.GetCount(), 20);
    for (int i = 0; i < 20; ++i) {
        EXPECT_NE(copy.GetAt(i), source.GetAt(i));
        // A group's shapes hold null slots here, at which copying stops.
        EXPECT_EQ(copy[i].GetCount(), (std::is_same_v<TypeParam, COutlines>) ? 0 : i);
    }
    const CPtrArray& base = source;
    EXPECT_EQ(base.GetCount(), 20);
}

// --- Shapes ------------------------------------------------------------------------------------

/// A shape of one rectangle.
CPolyPolyBezier Rectangle(double left, double right, double top, double bottom) {
    CPolyPolyBezier shape;
    AddTo(shape, Corners(Box(left, top, right, bottom)));
    return shape;
}

TEST(Outlines, InsertedShapesAreElementsAndCopyReachesTheirNodes) {
    COutlines group, copy;
    group.Add(new CPolyPolyBezier);
    auto* shape = new CPolyPolyBezier(Rectangle(0, 1, 2, 3));
    AddTo(*shape, Nodes());
    group.InsertAt(0, shape);
    ASSERT_EQ(group.GetCount(), 2);
    EXPECT_EQ(group.GetAt(0), shape);
    EXPECT_EQ(shape->GetCount(), 2) << "not its contours are inserted";
    copy.Copy(group);
    group[0][0][0].pt.x = 99;
    EXPECT_EQ(ListOf(copy[0][0]), ListOf(Corners(Box(0, 2, 1, 3))));
}

TEST(PolyPolyBezier, SetOrientationTurnsEveryContourTheSameWayAndPassesOverNull) {
    CPolyPolyBezier shape = Rectangle(0, 9, 0, 9);
    AddTo(shape, Corners({{2, 2}, {2, 4}, {4, 4}, {4, 2}, {2, 2}}));
    shape.SetAtGrow(3, nullptr);
    ASSERT_NE(IsClockwise(shape[0]), IsClockwise(shape[1]));
    for (const bool clockwise : {true, false}) {
        shape.SetOrientation(clockwise);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(IsClockwise(shape[i]), clockwise);
    }
}

TEST(PolyPolyBezier, EnsureClosedAddsAStraightSegmentToOpenContoursOnly) {
    const BPOINT leaving{{-1, -1}, {0, 0}, {1, 1}, 7};
    const BPOINT arriving{{9, 1}, {10, 0}, {11, 1}, 8};
    struct Case {
        const char* what;
        std::vector<BPOINT> nodes, closed;
    };
    const BPOINT close{{4, 4}, {0.5e-8, -0.5e-8}, {5, 5}, 9};
    const BPOINT apart{{4, 4}, {1e-8, 0}, {5, 5}, 9};
    const Case cases[] = {
        {"no node", {}, {}},
        {"one node", {leaving}, {leaving}},
        {"two nodes",
         {leaving, arriving},
         {{{0, 0}, {0, 0}, {1, 1}, 7}, {{9, 1}, {10, 0}, {10, 0}, 8}, Corner(0, 0)}},
        {"closed", {leaving, arriving, leaving}, {leaving, arriving, leaving}},
        {"closed within the tolerance", {leaving, arriving, close}, {leaving, arriving, close}},
        {"open by just the tolerance",
         {leaving, arriving, apart},
         {{{0, 0}, {0, 0}, {1, 1}, 7}, arriving, {{4, 4}, {1e-8, 0}, {1e-8, 0}, 9}, Corner(0, 0)}},
    };
    CPolyPolyBezier shape;
    for (const Case& c : cases) {
        AddTo(shape, MakeNodes(c.nodes));
        shape.SetAtGrow(shape.GetCount(), nullptr);
    }
    for (int time = 0; time < 2; ++time) {
        shape.EnsureClosed();
        for (int i = 0; i < static_cast<int>(std::size(cases)); ++i)
            EXPECT_EQ(ListOf(shape[2 * i]), cases[i].closed) << cases[i].what;
    }
    CPolyPolyBezier lost;
    AddTo(lost, Corners({{kNaN, 0}, {1, 1}}));
    lost.EnsureClosed();
    EXPECT_EQ(lost[0].GetCount(), 3) << "an anchor that is not a number equals nothing";
}

/// The frame by its definition: all contours flattened into one list, whose box is taken.
void CalcFrameByDefinition(const CPolyPolyBezier& shape, DRECT& frame, double resolution) {
    CArray<DPOINT, DPOINT> points;
    for (int c = 0; c < shape.GetCount(); ++c) {
        for (int i = 0; i + 1 < shape[c].GetCount(); ++i) {
            if (c > 0 && i == 0) points.Add(shape[c][0].pt);
            CBezier segment(shape[c][i], shape[c][i + 1]);
            segment.SetResolution(resolution);
            segment.GetPolyline(points);
        }
    }
    if (points.IsEmpty()) return;
    frame = {points[0].x, points[0].x, points[0].y, points[0].y};
    for (const DPOINT& p : points) {
        frame.left = p.x < frame.left ? p.x : frame.left;
        frame.right = p.x > frame.right ? p.x : frame.right;
        frame.top = p.y < frame.top ? p.y : frame.top;
        frame.bottom = p.y > frame.bottom ? p.y : frame.bottom;
    }
}

bool HasFrameByDefinition(const CPolyPolyBezier& shape, double resolution) {
    DRECT frame{11, 22, 33, 44}, defined = frame;
    shape.CalcFrame(frame, resolution);
    CalcFrameByDefinition(shape, defined, resolution);
    return SameBits(DPOINT{frame.left, frame.right}, DPOINT{defined.left, defined.right}) &&
           SameBits(DPOINT{frame.top, frame.bottom}, DPOINT{defined.top, defined.bottom});
}

TEST(PolyPolyBezier, FrameIsTheBoxOfTheFlattenedContours) {
    constexpr double odd[] = {0, -0.0, 1e-101, -1e-101, 5e-324, -5e-324, 1, 70};
    test::ExpectLaw([&](const std::vector<std::vector<std::array<std::int8_t, 6>>>& contours, int grain) {
        CPolyPolyBezier shape;
        for (const auto& nodes : contours) {
            Nodes contour;
            for (const auto& n : nodes) {
                const auto value = [&](std::size_t k) {
                    return grain % 4 == 0 ? odd[static_cast<unsigned>(n[k]) % 8] : n[k] * 0.71;
                };
                const auto at = [&](std::size_t k) { return DPOINT{value(k), value(k + 1)}; };
                contour.Add({at(0), at(2), at(4)});
            }
            AddTo(shape, std::move(contour));
        }
        RC_ASSERT(HasFrameByDefinition(shape, 2 * (1 + std::abs(grain % 20))));
    });
    for (const double far : {1e99, 1e101, -1.7e308, kInfinity, kNaN}) {
        for (const BPOINT& node : {BPOINT{{far, 0}, {1, 2}, {3, 4}}, {{0, 1}, {far, far}, {3, 4}}}) {
            CPolyPolyBezier shape;
            AddTo(shape, MakeNodes({{{0, 0}, {0, 0}, {0, far}}, {{9, 9}, {9, -9}, {0, 0}}, node}));
            EXPECT_TRUE(HasFrameByDefinition(shape, 5)) << far;
        }
    }
}

TEST(PolyPolyBezier, FrameFollowsTheCurveNotItsHandles) {
    CPolyPolyBezier shape;
    AddTo(shape, MakeNodes({{{0, 0}, {0, 0}, {0, 100}}, {{100, 100}, {100, 0}, {100, 0}}}));
    DRECT frame;
    shape.CalcFrame(frame, 0.01);
    EXPECT_EQ((DRECT{frame.left, frame.right, frame.top, 0}), (DRECT{0, 100, 0, 0}));
    EXPECT_NEAR(frame.bottom, 75, 0.01) << "the curve's highest point";
}

TEST(PolyPolyBezier, FrameOfAShapeWithoutSegmentsIsTheCallers) {
    CPolyPolyBezier shape;
    DRECT frame{1, 2, 3, 4};
    shape.CalcFrame(frame, 1);
    AddTo(shape, Nodes());
    AddTo(shape, Corners({{50, 50}}));
    shape.Add(static_cast<Nodes*>(nullptr));
    shape.CalcFrame(frame, 1);
    EXPECT_EQ(frame, (DRECT{1, 2, 3, 4}));
    AddTo(shape, Corners({{7, 8}, {9, 3}}));
    shape.CalcFrame(frame, 1);
    EXPECT_EQ(frame, (DRECT{7, 9, 3, 8})) << "a lone anchor does not widen the frame";
}

TEST(Outlines, FrameIsTheUnionOfItsShapesFrames) {
    COutlines group;
    const auto frame = [&] {
        DRECT result{-5, -5, -5, -5};
        group.CalcFrame(result, 1);
        return result;
    };
    EXPECT_EQ(frame(), (DRECT{0, 1, 0, 1})) << "no shape";
    group.Add(static_cast<CPolyPolyBezier*>(nullptr));
    EXPECT_EQ(frame(), (DRECT{0, 1, 0, 1})) << "only a null shape";
    AddTo(group, Rectangle(10, 20, 5, 8));
    EXPECT_EQ(frame(), (DRECT{10, 20, 5, 8})) << "the first shape that is there starts the frame";
    AddTo(group, Rectangle(12, 30, -2, 6));
    EXPECT_EQ(frame(), (DRECT{10, 30, -2, 8}));
    AddTo(group, CPolyPolyBezier());
    EXPECT_EQ(frame(), (DRECT{0, 30, -2, 8})) << "an empty shape pulls the frame to the origin";
}

// --- Triples -----------------------------------------------------------------------------------

TEST(TrigArray, ServesItsPointsByIndexAndForgetsThemWithItsTriples) {
    CTrigArray triples;
    EXPECT_THROW(triples.Point(0), CInvalidArgException);
    triples.Add({0, 1, 2});
    triples.Points().Add({3, 4});
    EXPECT_EQ(triples.Point(0), (DPOINT{3, 4}));
    EXPECT_THROW(triples.Point(1), CInvalidArgException);
    EXPECT_THROW(triples.Point(-1), CInvalidArgException);
    triples.RemoveAll();
    EXPECT_TRUE(triples.IsEmpty());
    EXPECT_TRUE(triples.Points().IsEmpty());
}

}  // namespace
}  // namespace tarvex
