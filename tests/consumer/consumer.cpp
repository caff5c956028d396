// What a program that links the library does first: fill one of its arrays, and be told by its
// exception, across the library's border, what an array cannot honour.
#include <cstdio>

#include "tarvex/framework.h"
#include "tarvex/records.h"

int main() {
    tarvex::CArray<tarvex::DPOINT, tarvex::DPOINT> points;
    points.Add({1, 2});
    try {
        points.GetAt(1);
    } catch (const tarvex::CInvalidArgException&) {
        std::puts("The installed library works.");
        return 0;
    }
    return 1;
}
