// Comparing and printing records in tests. Points compare with the library's tolerance.
#pragma once

#include <ostream>

#include "tarvex/records.h"

namespace tarvex {

inline bool operator==(const TRIG& a, const TRIG& b) { return a.a == b.a && a.b == b.b && a.c == b.c; }
inline bool operator==(const BPOINT& a, const BPOINT& b) {
    return a.cp1 == b.cp1 && a.pt == b.pt && a.cp2 == b.cp2 && a.flags == b.flags;
}

inline bool operator==(const DRECT& a, const DRECT& b) {
    return a.left == b.left && a.right == b.right && a.top == b.top && a.bottom == b.bottom;
}

inline void PrintTo(const DPOINT& p, std::ostream* os) { *os << '(' << p.x << ", " << p.y << ')'; }
inline void PrintTo(const TRIG& t, std::ostream* os) {
    *os << '{' << t.a << ", " << t.b << ", " << t.c << '}';
}
inline void PrintTo(const BPOINT& node, std::ostream* os) {
    PrintTo(node.cp1, os);
    PrintTo(node.pt, os);
    PrintTo(node.cp2, os);
    *os << '#' << node.flags;
}
inline void PrintTo(const DRECT& r, std::ostream* os) {
    *os << "x " << r.left << ".." << r.right << " y " << r.top << ".." << r.bottom;
}

}  // namespace tarvex
