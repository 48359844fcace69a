#ifndef ORU_SRC_DO_EVENT_H
#define ORU_SRC_DO_EVENT_H

#include "frame/object.h"
#include "oru/event.h"

struct ORUDoEvent {
    ORUDoName *pkg_name;
    char *pkg_vs;
    ORUDoName *name;
    ORUDoUri *uri;
    ORUDoStrbuf *fqn;  // made when it is first asked for
    ORUDoProperties *info;
    int64_t event_time;
    uint32_t ref_count;
    int32_t severity;
};

template <>
struct oru::ObjectType<ORUDoEvent> {
    static constexpr const char *name = "oru_do_event";
    static constexpr Tag tag = Tag::event;
    static auto &count(ORUDoEvent &self) { return self.ref_count; }
    static void release_members(ORUDoEvent &self);
};

#endif
