// Memory for yajl, which does not look at what its allocator gives: an allocation that fails leaves
// yajl by a jump to where it was called from, and all that it had allocated is released.
#ifndef ORU_SRC_JSON_YAJL_MEMORY_H
#define ORU_SRC_JSON_YAJL_MEMORY_H

#include <csetjmp>

#include <yajl/yajl_common.h>

namespace oru::json {

class YajlMemory {
  public:
    YajlMemory();
    ~YajlMemory() { release(); }
    YajlMemory(const YajlMemory &) = delete;
    YajlMemory &operator=(const YajlMemory &) = delete;

    yajl_alloc_funcs *functions() { return &functions_; }

    // Calls `work`, in which alone yajl may allocate. False when an allocation failed: everything
    // that yajl made is gone then. No frame between here and yajl may have destructors to run.
    template <class Work>
    [[gnu::noinline]] bool run(Work &work) {
        if (setjmp(way_out_) != 0) {
            release();
            return false;
        }
        work();
        return true;
    }

  private:
    struct alignas(16) Block {
        Block *before;
        Block *behind;
    };

    static void *allocate(void *memory, size_t size);
    static void *reallocate(void *memory, void *bytes, size_t size);
    static void give_back(void *memory, void *bytes);
    void *link(Block *block);
    void release();

    Block *blocks_ = nullptr;
    yajl_alloc_funcs functions_;
    std::jmp_buf way_out_;
};

}  // namespace oru::json

#endif
