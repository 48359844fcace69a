// Values as machine numbers: widening reads, and making from a double.
#include <climits>
#include <cmath>

#include "do/value.h"
#include "oru/rc.h"

namespace {

// The processor's conversions: what does not fit, and what is no number, gives the smallest number.
int32_t truncated_32(double x) {
    const bool fits = x > -2147483649.0 && x < 2147483648.0;
    return fits ? static_cast<int32_t>(x) : INT32_MIN;
}

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr uint64_t kTopBit = uint64_t{1} << 63;

int64_t truncated_64(double x) {
    const bool fits = x >= -kTwoTo63 && x < kTwoTo63;
    return fits ? static_cast<int64_t>(x) : INT64_MIN;
}

uint64_t truncated_unsigned_64(double x) {
    if (x >= kTwoTo63)
        return static_cast<uint64_t>(truncated_64(x - kTwoTo63)) | kTopBit;
    return static_cast<uint64_t>(truncated_64(x));
}

// The reverse of what one would write: true stands for a number near zero, and for none.
int32_t near_zero(double x) {
    return std::isnan(x) || std::fabs(x) <= oru::kSameNumber;
}

// The status of a widening read, by whether its type is accepted.
bool accepts(bool accepted, int32_t *errp) {
    *errp = accepted ? ORU_OK : ORU_RC_VALUE_TYPE;
    return accepted;
}

}  // namespace

double oru::real_of(const ORUDoValue &val) {
    return val.type == ORU_DO_TYPE_FLOAT ? static_cast<double>(number_of<float>(val))
                                         : number_of<double>(val);
}

int64_t oru_do_value_to_long(ORUDoValue *val, int32_t *errp) {
    ORU_REQUIRE(val);
    if (oru::is_whole_number_type(val->type))
        return oru::integer_of(*val);
    *errp = ORU_RC_VALUE_TYPE;
    return 0;
}

int64_t oru_do_value_to_int64(ORUDoValue *val, int32_t *errp) {
    ORU_REQUIRE(val);
    ORU_REQUIRE(errp);
    const bool accepted = oru_do_is_signed_int_num_type(val->type) != 0;
    return accepts(accepted, errp) ? oru::integer_of(*val) : 0;
}

uint64_t oru_do_value_to_u_int64(ORUDoValue *val, int32_t *errp) {
    ORU_REQUIRE(val);
    ORU_REQUIRE(errp);
    const bool accepted = oru_do_is_unsigned_int_num_type(val->type) != 0;
    return accepts(accepted, errp) ? static_cast<uint64_t>(oru::integer_of(*val)) : 0;
}

double oru_do_value_to_double(ORUDoValue *val, int32_t *errp) {
    ORU_REQUIRE(val);
    ORU_REQUIRE(errp);
    const bool accepted = oru_do_is_float_num_type(val->type) != 0;
    return accepts(accepted, errp) ? oru::real_of(*val) : 0;
}

ORUDoValue *oru_do_value_new_from_number(int32_t type, int32_t *errp, double x) {
    ORU_REQUIRE(errp);
    switch (type) {
        case ORU_DO_TYPE_UNSIGNED_BYTE:
            return oru_do_value_new_unsigned_byte(static_cast<uint8_t>(truncated_32(x)));
        case ORU_DO_TYPE_BYTE:
            return oru_do_value_new_byte(static_cast<int8_t>(truncated_32(x)));
        case ORU_DO_TYPE_UNSIGNED_SHORT:
            return oru_do_value_new_unsigned_short(static_cast<uint16_t>(truncated_32(x)));
        case ORU_DO_TYPE_SHORT:
            return oru_do_value_new_short(static_cast<int16_t>(truncated_32(x)));
        case ORU_DO_TYPE_UNSIGNED_INT:
            return oru_do_value_new_unsigned_int(static_cast<uint32_t>(truncated_64(x)));
        case ORU_DO_TYPE_INT:
            return oru_do_value_new_int(truncated_32(x));
        case ORU_DO_TYPE_UNSIGNED_LONG:
            return oru_do_value_new_unsigned_long(truncated_unsigned_64(x));
        case ORU_DO_TYPE_LONG:
            return oru_do_value_new_long(truncated_64(x));
        case ORU_DO_TYPE_DATETIME:
            return oru_do_value_new_datetime(truncated_64(x));
        case ORU_DO_TYPE_DURATION:
            return oru_do_value_new_duration(truncated_64(x));
        case ORU_DO_TYPE_BOOLEAN:
            return oru_do_value_new_boolean(near_zero(x));
        case ORU_DO_TYPE_FLOAT:
            return oru_do_value_new_float(static_cast<float>(x));
        case ORU_DO_TYPE_DOUBLE:
            return oru_do_value_new_double(x);
        default:
            *errp = ORU_RC_WRONG_DATA_TYPE;
            return nullptr;
    }
}
