// The bounds of the numeric types.
#include <limits>

#include "oru/constraint.h"
#include "oru/value.h"

namespace {

struct SignedBounds {
    int64_t min;
    int64_t max;
};

template <class Number>
constexpr SignedBounds kBoundsOf{std::numeric_limits<Number>::min(),
                                 std::numeric_limits<Number>::max()};

SignedBounds signed_bounds(int32_t typecode) {
    switch (typecode) {
        case ORU_DO_TYPE_BYTE:
            return kBoundsOf<int8_t>;
        case ORU_DO_TYPE_SHORT:
            return kBoundsOf<int16_t>;
        case ORU_DO_TYPE_INT:
            return kBoundsOf<int32_t>;
        case ORU_DO_TYPE_LONG:
        case ORU_DO_TYPE_DATETIME:
        case ORU_DO_TYPE_DURATION:
            return kBoundsOf<int64_t>;
        default:
            return {0, 0};
    }
}

}  // namespace

int64_t oru_do_constraint_get_min_signed_int_num(int32_t typecode) {
    return signed_bounds(typecode).min;
}

int64_t oru_do_constraint_get_max_signed_int_num(int32_t typecode) {
    return signed_bounds(typecode).max;
}

uint64_t oru_do_constraint_get_max_unsigned_int_num(int32_t typecode) {
    switch (typecode) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
            return std::numeric_limits<uint8_t>::max();
        case ORU_DO_TYPE_UNSIGNED_SHORT:
            return std::numeric_limits<uint16_t>::max();
        case ORU_DO_TYPE_UNSIGNED_INT:
            return std::numeric_limits<uint32_t>::max();
        case ORU_DO_TYPE_UNSIGNED_LONG:
            return std::numeric_limits<uint64_t>::max();
        default:
            return 0;
    }
}

// Not the most negative numbers: checks of types rely on the least positive ones.
double oru_do_constraint_get_min_float_num(int32_t typecode) {
    if (typecode == ORU_DO_TYPE_FLOAT)
        return static_cast<double>(std::numeric_limits<float>::min());
    return typecode == ORU_DO_TYPE_DOUBLE ? std::numeric_limits<double>::min() : 0;
}

double oru_do_constraint_get_max_float_num(int32_t typecode) {
    if (typecode == ORU_DO_TYPE_FLOAT)
        return static_cast<double>(std::numeric_limits<float>::max());
    return typecode == ORU_DO_TYPE_DOUBLE ? std::numeric_limits<double>::max() : 0;
}
