// The object core: how every reference-counted record is made, shared and released.
//
// A record is a plain struct with its own 32-bit count. Beside its definition it specialises
// ObjectType, which tells the core the rest:
//
//     template <> struct oru::ObjectType<ORUDoName> {
//         static constexpr const char *name = "oru_do_name";
//         static constexpr Tag tag = Tag::name;
//         static auto &count(ORUDoName &self) { return self.ref; }
//         static void release_members(ORUDoName &self);
//     };
//
// and one line in its unit, ORU_OBJECT_API(ORUDoName, oru_do_name), exports the operations that
// all objects have. Parts of a record that live in pools of their own and are not counted (list
// items, entries) specialise it with `name` and `tag` alone and use make_element and free_element.
#ifndef ORU_SRC_FRAME_OBJECT_H
#define ORU_SRC_FRAME_OBJECT_H

#include <atomic>
#include <new>
#include <type_traits>
#include <utility>

#include "frame/pool.h"
#include "frame/require.h"
#include "frame/trace.h"

namespace oru {

template <class T>
struct ObjectType;

template <class T>
inline Pool pool_of{ObjectType<T>::name, ObjectType<T>::tag, sizeof(T)};

// A record with the given first fields, all others zero. Null when memory runs out.
template <class T, class... Fields>
T *make_element(Fields &&...fields) {
    static_assert(std::is_trivially_destructible_v<T>);
    void *block = pool_of<T>.take();
    return block == nullptr ? nullptr : ::new (block) T{std::forward<Fields>(fields)...};
}

template <class T>
void free_element(T *element) {
    pool_of<T>.give(element);
}

// Counts are read without the atomic step around them, which is all that ref and deref promise.
template <class T>
auto atomic_count(T &object) {
    return std::atomic_ref(ObjectType<T>::count(object));
}

template <class T>
using CountOf = std::remove_reference_t<decltype(ObjectType<T>::count(std::declval<T &>()))>;

// What happens to counts, told at the level of references. Apart from the operations and called
// last in them, so that with the level off these cost little more than their atomic operation.
void trace_ref(const char *type_name, const void *object, uint32_t count);
void trace_deref(const char *type_name, const void *object, uint32_t count);
[[noreturn]] void released_too_often(const char *type_name, const void *object);

template <class T>
[[gnu::noinline]] T *traced_ref(T *object) {
    trace_ref(ObjectType<T>::name, object,
              static_cast<uint32_t>(atomic_count(*object).load(std::memory_order_relaxed)));
    return object;
}

// Only the last release comes here.
template <class T>
[[gnu::noinline]] void destroy(T *object) {
    ObjectType<T>::release_members(*object);
    free_element(object);
}

// A new object with one reference, which belongs to the caller. Null when memory runs out.
template <class T, class... Fields>
T *make(Fields &&...fields) {
    T *object = make_element<T>(std::forward<Fields>(fields)...);
    if (object == nullptr) [[unlikely]]
        return nullptr;
    ObjectType<T>::count(*object) = 1;
    if (trace_enabled(Level::reference)) [[unlikely]]
        traced_ref(object);
    return object;
}

// One more reference. A count of zero is terminal and stays.
template <class T>
T *ref(T *object) {
    if (object == nullptr)
        return nullptr;
    auto count = atomic_count(*object);
    if (count.load(std::memory_order_relaxed) > 0) [[likely]]
        count.fetch_add(1);
    return trace_enabled(Level::reference) ? traced_ref(object) : object;
}

template <class T>
void release(T *object, CountOf<T> seen) {
    do {
        if (seen == 0) [[unlikely]]
            released_too_often(ObjectType<T>::name, object);
    } while (!atomic_count(*object).compare_exchange_weak(seen, seen - 1));
    if (seen == 1) [[unlikely]]
        destroy(object);
}

template <class T>
[[gnu::noinline]] void traced_deref(T *object, CountOf<T> seen) {
    trace_deref(ObjectType<T>::name, object, static_cast<uint32_t>(seen));
    release(object, seen);
}

template <class T>
void deref(T *object) {
    if (object == nullptr)
        return;
    const auto seen = atomic_count(*object).load(std::memory_order_relaxed);
    if (trace_enabled(Level::reference)) [[unlikely]] {
        traced_deref(object, seen);
    } else {
        release(object, seen);
    }
}

// Replaces a held object. The new one is counted first: it may be the one that is held.
template <class T>
void replace(T *&held, T *object) {
    ref(object);
    deref(std::exchange(held, object));
}

// Owns one reference for a scope.
template <class T>
class Ref {
  public:
    Ref() = default;
    static Ref adopt(T *object) { return Ref(object); }
    static Ref share(T *object) { return Ref(ref(object)); }
    Ref(Ref &&other) noexcept : object_(other.release()) {}
    Ref &operator=(Ref &&other) noexcept {
        deref(std::exchange(object_, other.release()));
        return *this;
    }
    ~Ref() { deref(object_); }

    T *get() const { return object_; }
    T *operator->() const { return object_; }
    T &operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }
    // Hands the reference to the caller.
    [[nodiscard]] T *release() { return std::exchange(object_, nullptr); }

  private:
    explicit Ref(T *object) : object_(object) {}
    T *object_ = nullptr;
};

template <class T, class... Fields>
Ref<T> make_ref(Fields &&...fields) {
    return Ref<T>::adopt(make<T>(std::forward<Fields>(fields)...));
}

}  // namespace oru

// The operations that every counted type exports.
#define ORU_OBJECT_API(Record, name)           \
    ORU_POOL_API(::oru::pool_of<Record>, name) \
    Record *name##_ref(Record *object) {       \
        return ::oru::ref(object);             \
    }                                          \
    void name##_deref(Record *object) {        \
        ::oru::deref(object);                  \
    }

#endif
