// The growable array: bounds, the growth rule, zero filling and the archive form.
#include "support/precompiled.h"
#include "tarvex/records.h"

namespace tarvex {
namespace {

TEST(Array, AppendingAfterTheFirstElementGrowsByFour) {
    CArray<TRIG, TRIG> a;
    a.Add({1, 2, 3});
    const TRIG* first = a.GetData();
    a.Add({4, 5, 6});
    first = a.GetData();
    for (int i = 0; i < 3; ++i) a.Add({i, i, i});
    EXPECT_EQ(a.GetData(), first) << "capacity 5 holds five elements";
    a.Add({7, 8, 9});
    EXPECT_EQ(a.GetSize(), 6);
}

}  // namespace
}  // namespace tarvex
