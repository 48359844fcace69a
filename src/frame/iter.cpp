#include "frame/iter.h"

ORUDoIter *oru_do_iter_new() {
    return oru::make<ORUDoIter>(oru::kUnboundIter);
}

void oru_do_iter_init(ORUDoIter *iter) {
    if (iter != nullptr)
        *iter = oru::kUnboundIter;
}

void oru_do_iter_deref(ORUDoIter *iter) {
    oru::deref(iter);
}

ORU_POOL_API(oru::pool_of<ORUDoIter>, oru_do_iter)
