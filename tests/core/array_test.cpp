// The growable array: bounds, the growth rule, zero filling, and the state that a refused call leaves.
#include "support/precompiled.h"

#include "support/contours.h"
#include "support/property.h"
#include "tarvex/records.h"

namespace tarvex {

namespace {

using testing::ElementsAre;
using Ints = CArray<int, int>;

void Fill(Ints& array, const std::vector<int>& values) { array = test::ArrayOf(values); }

/// How many elements can be added before the storage moves: what is left of the capacity.
template <class T>
int SpareCapacity(CArray<T, T>& array) {
    int spare = 0;
    for (const T* storage = array.GetData();; ++spare) {
        array.Add(T{});
        if (array.GetData() != storage) return spare;
    }
}

TEST(Array, GrowsByAnEighthOfItsCountBetweenFourAnd1024) {
    struct Case {
        int count, capacityAfterOneMore;
    };
    for (const auto& [count, capacity] :
         {Case{1, 5}, {31, 35}, {39, 43}, {40, 45}, {100, 112}, {8191, 9214}, {8192, 9216}, {10000, 11024}}) {
        CArray<TRIG, TRIG> array;
        array.SetSize(count);
        array.Add({});
        EXPECT_EQ(SpareCapacity(array), capacity - count - 1) << "from " << count << " elements";
    }
}

TEST(Array, FirstElementOfAnEmptyArrayAndFreeExtraLeaveNoSpareCapacity) {
    Ints array;
    array.SetSize(50);
    array.SetSize(0);
    EXPECT_EQ(array.GetData(), nullptr) << "size 0 frees the storage";
    array.Add(1);
    EXPECT_EQ(SpareCapacity(array), 0);
    array.SetSize(10, 100);
    array.FreeExtra();
    EXPECT_EQ(SpareCapacity(array), 0);
}

TEST(Array, GrowthStepIsKeptUntilAnotherIsSet) {
    Ints array;
    array.SetSize(3, 20);
    EXPECT_EQ(SpareCapacity(array), 17) << "the first storage holds a step at least";
    EXPECT_EQ(SpareCapacity(array), 19) << "21 elements in room for 40";
    array.SetSize(0);
    array.SetSize(1, -1);
    EXPECT_EQ(SpareCapacity(array), 19) << "-1 keeps the step, also over an empty array";
    array.SetSize(21, 0);
    array.FreeExtra();
    array.Add(0);
    EXPECT_EQ(SpareCapacity(array), 3) << "0 brings back the automatic step";
}

TEST(Array, ShrinkingKeepsStorageAndRegrownElementsAreZero) {
    Ints array;
    Fill(array, {1, 2, 3, 4, 5});
    const int* storage = array.GetData();
    array.SetSize(2);
    array.SetSize(5);
    EXPECT_EQ(array.GetData(), storage);
    EXPECT_THAT(array, ElementsAre(1, 2, 0, 0, 0));
    array.RemoveAt(0, 5);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetData(), storage) << "removing keeps the capacity";
    array.FreeExtra();
    EXPECT_EQ(array.GetData(), nullptr);
    Fill(array, {1});
    array.Copy(Ints());
    EXPECT_EQ(array.GetData(), nullptr);
}

TEST(Array, RefusedCallsRaiseAndChangeNothing) {
    struct Case {
        const char* call;
        void (*run)(Ints&);
    };
    constexpr int last = std::numeric_limits<int>::max();
    constexpr int first = std::numeric_limits<int>::min();
    const Case cases[] = {
        {"GetAt(-1)", [](Ints& a) { a.GetAt(-1); }},
        {"GetAt(count)", [](Ints& a) { a.GetAt(3); }},
        {"const GetAt(count)", [](Ints& a) { std::as_const(a).GetAt(3); }},
        {"ElementAt(count)", [](Ints& a) { a.ElementAt(3); }},
        {"[-1]", [](Ints& a) { a[-1] = 0; }},
        {"[count]", [](Ints& a) { a[3] = 0; }},
        {"[smallest]", [](Ints& a) { a[first] = 0; }},
        {"SetAt(-1)", [](Ints& a) { a.SetAt(-1, 9); }},
        {"SetAt(count)", [](Ints& a) { a.SetAt(3, 9); }},
        {"SetAtGrow(-1)", [](Ints& a) { a.SetAtGrow(-1, 9); }},
        {"SetAtGrow(largest)", [](Ints& a) { a.SetAtGrow(last, 9); }},
        {"SetSize(-1)", [](Ints& a) { a.SetSize(-1); }},
        {"SetSize(-1, step)", [](Ints& a) { a.SetSize(-1, 50); }},
        {"Append(itself)", [](Ints& a) { a.Append(a); }},
        {"InsertAt(-1)", [](Ints& a) { a.InsertAt(-1, 9); }},
        {"InsertAt 0 copies", [](Ints& a) { a.InsertAt(1, 9, 0); }},
        {"InsertAt -1 copies", [](Ints& a) { a.InsertAt(1, 9, -1); }},
        {"InsertAt too many copies", [](Ints& a) { a.InsertAt(1, 9, last); }},
        {"InsertAt the end of the range", [](Ints& a) { a.InsertAt(last, 9, 2); }},
        {"InsertAt(-1, array)",
         [](Ints& a) {
             Ints other;
             a.InsertAt(-1, &other);
         }},
        {"InsertAt(1, null)", [](Ints& a) { a.InsertAt(1, static_cast<Ints*>(nullptr)); }},
        {"RemoveAt(-1)", [](Ints& a) { a.RemoveAt(-1); }},
        {"RemoveAt(-1, 0)", [](Ints& a) { a.RemoveAt(-1, 0); }},
        {"RemoveAt(count, 1)", [](Ints& a) { a.RemoveAt(3, 1); }},
        {"RemoveAt(count + 1, 0)", [](Ints& a) { a.RemoveAt(4, 0); }},
        {"RemoveAt(1, -1)", [](Ints& a) { a.RemoveAt(1, -1); }},
        {"RemoveAt past the end", [](Ints& a) { a.RemoveAt(1, 3); }},
        {"RemoveAt largest", [](Ints& a) { a.RemoveAt(1, last); }},
    };
    for (const Case& c : cases) {
        Ints array;
        Fill(array, {1, 2, 3});
        const int* storage = array.GetData();
        EXPECT_THROW(c.run(array), CInvalidArgException) << c.call;
        EXPECT_THAT(array, ElementsAre(1, 2, 3)) << c.call;
        EXPECT_EQ(array.GetData(), storage) << c.call;
        array.Add(4);
        EXPECT_EQ(SpareCapacity(array), 3) << c.call << " left the growth step alone";
    }
}

TEST(Array, GapsAreZeroBytesNotDefaultRecords) {
    struct Marked {
        int value = 77;
    };
    CArray<Marked, Marked> array;
    array.Add({1});
    array.SetAtGrow(6, {2});
    array.InsertAt(9, {3}, 2);
    std::vector<int> values;
    for (const Marked& m : array) values.push_back(m.value);
    EXPECT_THAT(values, ElementsAre(1, 0, 0, 0, 0, 0, 2, 0, 0, 3, 3));
}

TEST(Array, ValuesInsideTheArrayMayBePassedWhileItMoves) {
    CArray<int, const int&> array;
    array.Add(5);
    for (int i = 0; i < 100; ++i) array.Add(array[0]);
    array.InsertAt(0, array[100], 200);
    EXPECT_EQ(array.GetSize(), 301);
    EXPECT_TRUE(std::ranges::all_of(array, [](int v) { return v == 5; }));
}

TEST(Array, MovingTakesTheStorageAndTheGrowthStep) {
    Ints source;
    source.SetSize(2, 30);
    const int* storage = source.GetData();
    Ints target(std::move(source));
    EXPECT_EQ(target.GetData(), storage);
    EXPECT_TRUE(source.IsEmpty());
    Fill(source, {4});
    source = std::move(target);
    EXPECT_EQ(source.GetData(), storage);
    EXPECT_EQ(SpareCapacity(source), 28);
}

TEST(Array, BehavesAsAPlainVectorUnderAnySequenceOfOperations) {
    test::ExpectLaw([](const std::vector<std::array<int, 3>>& calls) {
        Ints array;
        std::vector<int> model;
        for (const auto& [call, position, value] : calls) {
            const int i = std::abs(position % 20);
            const auto at = static_cast<std::size_t>(i);
            const int n = std::abs(value % 4);
            switch (std::abs(call % 8)) {
                case 0:
                    RC_ASSERT(array.Add(value) == static_cast<int>(model.size()));
                    model.push_back(value);
                    break;
                case 1:
                    array.SetSize(i, value % 3 == 0 ? n : -1);
                    model.resize(at);
                    break;
                case 2:
                    array.SetAtGrow(i, value);
                    if (at >= model.size()) model.resize(at + 1);
                    model[at] = value;
                    break;
                case 3: {
                    array.InsertAt(i, value, n + 1);
                    if (at > model.size()) model.resize(at);
                    model.insert(model.begin() + i, static_cast<std::size_t>(n + 1), value);
                    break;
                }
                case 4: {
                    if (at + static_cast<std::size_t>(n) > model.size()) break;
                    array.RemoveAt(i, n);
                    model.erase(model.begin() + i, model.begin() + i + n);
                    break;
                }
                case 5: {
                    Ints other;
                    for (int k = 0; k < n; ++k) other.Add(value + k);
                    array.InsertAt(i, &other);
                    if (n > 0 && at > model.size()) model.resize(at);
                    if (n > 0) model.insert(model.begin() + i, other.begin(), other.end());
                    array.Append(other);
                    model.insert(model.end(), other.begin(), other.end());
                    break;
                }
                case 6: {
                    array.Copy(array);
                    array.InsertAt(i % (array.GetSize() + 1), &array);  // what it held before the call
                    const std::vector<int> held = model;
                    model.insert(model.begin() + i % (static_cast<int>(held.size()) + 1), held.begin(),
                                 held.end());
                    array.SetSize(std::min(array.GetSize(), 50));
                    model.resize(std::min<std::size_t>(model.size(), 50));
                    break;
                }
                default: {
                    array.FreeExtra();
                    Ints copy;
                    copy.Copy(array);
                    array = std::move(copy);
                }
            }
            RC_ASSERT(std::ranges::equal(array, model));
            const int size = static_cast<int>(model.size());
            RC_ASSERT(array.GetSize() == size && array.GetCount() == size);
            RC_ASSERT(array.GetUpperBound() == size - 1 && array.IsEmpty() == model.empty());
        }
    });
}

TEST(Record, PointsAreEqualBelowTheToleranceInEachCoordinate) {
    struct Case {
        DPOINT a, b;
        bool equal;
    };
    using test::kInfinity;
    using test::kNaN;
    const Case cases[] = {
        {{0, 0}, {0.99e-8, 0}, true},    {{0, 0}, {1e-8, 0}, false},
        {{0, 0}, {0, -0.99e-8}, true},   {{0, 0}, {0, -1e-8}, false},
        {{5, 5}, {5, 5}, true},          {{kNaN, 0}, {kNaN, 0}, false},
        {{0, kNaN}, {0, kNaN}, false},   {{kInfinity, 0}, {kInfinity, 0}, false},
        {{0, 0}, {0, kInfinity}, false}, {{0, 0}, {0.99e-8, 0.99e-8}, true},
        {{0, 0}, {0.5e-8, 1}, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.a == c.b, c.equal) << c.b.x << ' ' << c.b.y;
        EXPECT_EQ(c.a != c.b, !c.equal) << c.b.x << ' ' << c.b.y;
    }
}

TEST(Object, TellsTheClassThatDeclaresItself) {
    EXPECT_STREQ(CPtrArray().GetRuntimeClass()->m_lpszClassName, "CPtrArray");
    EXPECT_STREQ(CDWordArray().GetRuntimeClass()->m_lpszClassName, "CDWordArray");
    EXPECT_STREQ(Ints().GetRuntimeClass()->m_lpszClassName, "CObject");
}

}  // namespace
}  // namespace tarvex
