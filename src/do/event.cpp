#include "do/event.h"

#include "do/name.h"
#include "do/properties.h"
#include "do/strbuf.h"
#include "do/uri.h"
#include "frame/text.h"
#include "oru/properties.h"
#include "oru/rc.h"
#include "oru/uri.h"

namespace {

// Null when a part is missing and when memory does not hold the whole.
ORUDoStrbuf *new_qualified_name(const ORUDoEvent &event) {
    if (event.pkg_name == nullptr || event.pkg_vs == nullptr || event.name == nullptr)
        return nullptr;
    auto text = oru::Ref<ORUDoStrbuf>::adopt(oru_do_strbuf_new());
    if (!text)
        return nullptr;
    oru_do_strbuf_add_string(text.get(), event.pkg_name->str);
    oru_do_strbuf_add_char(text.get(), ':');
    oru_do_strbuf_add_string(text.get(), event.pkg_vs);
    oru_do_strbuf_add_char(text.get(), '/');
    oru_do_strbuf_add_string(text.get(), event.name->str);
    return oru_do_strbuf_get_err(text.get()) == ORU_OK ? text.release() : nullptr;
}

}  // namespace

void oru::ObjectType<ORUDoEvent>::release_members(ORUDoEvent &self) {
    deref(self.pkg_name);
    Text(self.pkg_vs).reset(nullptr);
    deref(self.name);
    deref(self.uri);
    deref(self.fqn);
    deref(self.info);
}

ORUDoEvent *oru_do_event_new(ORUDoName *name, ORUDoUri *uri, int64_t event_time, int32_t severity,
                             ORUDoProperties *info) {
    return oru_do_event_new_2(nullptr, nullptr, name, uri, event_time, severity, info);
}

ORUDoEvent *oru_do_event_new_2(ORUDoName *pkg_name, const char *pkg_vs, ORUDoName *name,
                               ORUDoUri *uri, int64_t event_time, int32_t severity,
                               ORUDoProperties *info) {
    auto event = oru::make_ref<ORUDoEvent>();
    if (!event)
        return nullptr;
    oru::replace_text(event->pkg_vs, pkg_vs);
    if (pkg_vs != nullptr && event->pkg_vs == nullptr)
        return nullptr;
    event->pkg_name = oru::ref(pkg_name);
    event->name = oru::ref(name);
    event->uri = oru::ref(uri);
    event->info = oru::ref(info);
    event->event_time = event_time;
    event->severity = severity;
    return event.release();
}

// ---- Reading ----

ORUDoName *oru_do_event_get_pkg_name(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->pkg_name;
}

const char *oru_do_event_get_pkg_vs(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->pkg_vs;
}

ORUDoName *oru_do_event_get_name(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->name;
}

ORUDoUri *oru_do_event_get_uri(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->uri;
}

int64_t oru_do_event_get_event_time(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->event_time;
}

int32_t oru_do_event_get_severity(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->severity;
}

ORUDoProperties *oru_do_event_get_info(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    return event->info;
}

const char *oru_do_event_get_fqn_event_name(ORUDoEvent *event) {
    ORU_REQUIRE(event);
    if (event->fqn == nullptr)
        event->fqn = new_qualified_name(*event);
    return event->fqn != nullptr ? oru_do_strbuf_to_string(event->fqn) : nullptr;
}

// ---- Printing ----

int32_t oru_do_event_to_strbuf(ORUDoEvent *event, int32_t tabs, ORUDoStrbuf *strbuf) {
    if (event == nullptr)
        return ORU_OK;
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_string(strbuf, "Event(");
    if (event->pkg_name != nullptr) {
        oru_do_strbuf_add_string(strbuf, event->pkg_name->str);
        oru_do_strbuf_add_char(strbuf, ':');
    }
    if (event->pkg_vs != nullptr) {
        oru_do_strbuf_add_string(strbuf, event->pkg_vs);
        oru_do_strbuf_add_char(strbuf, '/');
    }
    oru_do_strbuf_add_string(strbuf, oru_do_name_get_strname(event->name));
    oru_do_strbuf_add_string(strbuf, "):");
    oru_do_uri_to_strbuf(event->uri, 0, strbuf);
    oru_do_strbuf_add_char(strbuf, '-');
    oru_do_strbuf_add_long(strbuf, event->event_time);
    oru_do_strbuf_add_char(strbuf, '-');
    oru_do_strbuf_add_long(strbuf, event->severity);
    oru_do_strbuf_add_char(strbuf, '\n');
    oru_do_properties_to_strbuf(event->info, 0, strbuf);
    oru_do_strbuf_add_char(strbuf, '\n');
    oru_do_strbuf_add_tab(strbuf, tabs);
    oru_do_strbuf_add_string(strbuf, "}\n");  // it closes nothing; readers know it so
    return ORU_OK;
}

ORU_OBJECT_API(ORUDoEvent, oru_do_event)
