#include "tests/lab/machine/fault_thunk.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

struct Point {
    bool fails = false;
    int asked = 0;
    const void* caller = nullptr;
};

bool Decide(void* point_address, const void* caller, std::uint64_t* result) {
    auto& point = *static_cast<Point*>(point_address);
    ++point.asked;
    point.caller = caller;
    *result = 0x1234567887654321;
    return point.fails;
}

struct Triple {
    std::int64_t a, b, c;
};

// More arguments than registers, of both kinds, and a result in memory.
double Mixed(int a, double b, std::int64_t c, float d, const char* e, double f, std::uint8_t g) {
    return a + 10 * b + 100 * static_cast<double>(c) + 1000 * static_cast<double>(d) + 10000 * (e[0] - '0') +
           100000 * f + 1000000 * g;
}

Triple InMemory(std::int64_t a, std::int64_t b) {
    return {a, b, a + b};
}

std::uint64_t NeverCalled(std::uint64_t) {
    ADD_FAILURE() << "called although it fails";
    return 0;
}

template <typename Function>
Function* Thunked(Function* function, Point& point) {
    return reinterpret_cast<Function*>(
        lab::MakeFaultThunk(Decide, &point, reinterpret_cast<void*>(function)));
}

TEST(FaultThunk, PassesAnyCallThroughUnchanged) {
    Point point;
    EXPECT_EQ(Thunked(Mixed, point)(1, 2, 3, 4, "5", 6, 7), 7654321);
    const Triple triple = Thunked(InMemory, point)(40, 2);
    EXPECT_EQ(triple.a, 40);
    EXPECT_EQ(triple.b, 2);
    EXPECT_EQ(triple.c, 42);
    EXPECT_EQ(point.asked, 2);
}

TEST(FaultThunk, ReturnsAFailureWithoutCallingTheFunction) {
    Point point;
    point.fails = true;
    EXPECT_EQ(Thunked(NeverCalled, point)(1), 0x1234567887654321);
    EXPECT_EQ(point.asked, 1);
}

TEST(FaultThunk, PassesOnTheReturnAddress) {
    Point first;
    Point second;
    Thunked(InMemory, first)(1, 2);
    Thunked(InMemory, second)(1, 2);
    EXPECT_NE(first.caller, nullptr);
    EXPECT_NE(first.caller, second.caller);
}

TEST(FaultThunk, ManyCanExistAtOnce) {
    Point points[2000];
    for (Point& point : points) {
        EXPECT_EQ(Thunked(InMemory, point)(1, 2).c, 3);
    }
    for (const Point& point : points) {
        ASSERT_EQ(point.asked, 1);
    }
}

}  // namespace
