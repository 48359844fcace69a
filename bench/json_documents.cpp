#include "bench/json_documents.h"

#include <cstdint>

namespace oru::bench {
namespace {

constexpr int kPortsOfSlot = 12;
constexpr int kPortsOfChassis = 8 * kPortsOfSlot;

struct Port {
    std::string uri;
    std::string name;
    const char *state;
    int mtu;
    int64_t speed;
    const char *load;
    const char *enabled;
    std::string description;  // as it stands in JSON: one in eight has something escaped
};

std::string uri_of_slot(int port) {
    const int slot = port % kPortsOfChassis / kPortsOfSlot + 1;
    return "/network/chassis;id=" + std::to_string(port / kPortsOfChassis + 1) +
           "/slots;number=" + std::to_string(slot);
}

Port port_at(int i) {
    const bool up = i % 3 != 0;
    return {uri_of_slot(i) + "/ports;name=ge-" + std::to_string(i % kPortsOfSlot),
            "ge-" + std::to_string(i % kPortsOfSlot),
            up ? "up" : "down",
            1500 + i % 7,
            int64_t{1000000000} * (i % 4 + 1),
            i % 2 != 0 ? "0.25" : "12.5",
            up ? "true" : "false",
            i % 8 != 0 ? "uplink to building " + std::to_string(i)
                       : "the \\\"old\\\" uplink of building " + std::to_string(i)};
}

class JsonText {
  public:
    void raw(const std::string &text) { text_ += text; }
    void separator() {
        if (text_.back() != '[' && text_.back() != '{')
            text_ += ',';
    }
    void key(const std::string &name) {
        separator();
        text_ += '"' + name + "\":";
    }
    void quoted(const std::string &text) { text_ += '"' + text + '"'; }
    void tagged(const std::string &name, const char *tag, const std::string &payload) {
        key(name);
        text_ += std::string("{\"%") + tag + "\":" + payload + '}';
    }
    void tagged_text(const std::string &name, const char *tag, const std::string &text) {
        tagged(name, tag, '"' + text + '"');
    }
    void member(const std::string &name, const std::string &text) {
        key(name);
        quoted(text);
    }
    void number(const std::string &name, const std::string &digits) {
        key(name);
        text_ += digits;
    }
    size_t size() const { return text_.size(); }
    std::string take() { return std::move(text_); }

  private:
    std::string text_;
};

// ---- The wire form ----

void add_attributes(JsonText &json, const Port &port) {
    json.raw("{\"%properties\":{");
    json.tagged_text("name", "string", port.name);
    json.tagged_text("adminState", "enumeration", port.state);
    json.tagged("mtu", "uint", std::to_string(port.mtu));
    json.tagged("speed", "ulong", std::to_string(port.speed));
    json.tagged("load", "double", port.load);
    json.tagged("enabled", "boolean", port.enabled);
    json.tagged_text("description", "string", port.description);
}

void add_table(JsonText &json, int i) {
    const Port port = port_at(i);
    json.separator();
    add_attributes(json, port);
    json.tagged_text("_uri", "mr_uri", port.uri);
    json.raw("}}");
}

void add_row(JsonText &json, int i) {
    const Port port = port_at(i);
    json.separator();
    json.raw("[\"" + port.uri + "\",\"" + port.name + "\",\"" + port.state + "\"," +
             std::to_string(port.mtu) + ',' + std::to_string(port.mtu * 100000) + ',' + port.load +
             ',' + port.enabled + ",\"" + port.description + "\"]");
}

void open_node(JsonText &json, const std::string &name, const std::string &uri) {
    json.separator();
    json.raw("{");
    json.member("name", name);
    json.member("mr_uri", uri);
}

void open_children(JsonText &json) {
    json.raw(",\"children\":{\"%dtree\":[");
}

constexpr char kCloseChildren[] = "]}}";

void add_node(JsonText &json, int i) {
    const Port port = port_at(i);
    if (i % kPortsOfSlot == 0) {
        if (i != 0)
            json.raw(kCloseChildren);
        open_node(json, "slots", uri_of_slot(i));
        open_children(json);
    }
    open_node(json, "ports", port.uri);
    json.key("props");
    add_attributes(json, port);
    json.raw("}}}");
}

struct WireForm {
    const char *begin;
    void (*add)(JsonText &json, int port);
    const char *end;
};

WireForm wire_form(Shape shape) {
    switch (shape) {
        case Shape::properties_list:
            return {"{\"%properties_list\":[", add_table, "]}"};
        case Shape::data_tree:
            return {"{\"%dtree\":{\"name\":\"\",\"mr_uri\":\"/network\",\"children\":{\"%dtree\":[",
                    add_node, "]}}]}}}"};
        default:
            return {"{\"%vtable\":[", add_row, "]}"};
    }
}

// ---- For YANG ----

// 64-bit numbers and fractions are texts there.
void add_leaves(JsonText &json, const Port &port) {
    json.separator();
    json.raw("{");
    json.member("uri", port.uri);
    json.member("name", port.name);
    json.member("adminState", port.state);
    json.number("mtu", std::to_string(port.mtu));
    json.member("speed", std::to_string(port.speed));
    json.member("load", port.load);
    json.number("enabled", port.enabled);
    json.member("description", port.description);
    json.raw("}");
}

void add_yang_port(JsonText &json, int i) {
    add_leaves(json, port_at(i));
}

void add_yang_node(JsonText &json, int i) {
    if (i % kPortsOfSlot == 0) {
        if (i != 0)
            json.raw("]}");
        json.separator();
        json.raw("{");
        json.member("uri", uri_of_slot(i));
        json.raw(",\"ports\":[");
    }
    add_yang_port(json, i);
}

}  // namespace

std::string wire_document(Shape shape, size_t size, int &ports) {
    const WireForm form = wire_form(shape);
    JsonText json;
    json.raw(form.begin);
    for (ports = 0; json.size() < size; ports++)
        form.add(json, ports);
    json.raw(form.end);
    return json.take();
}

std::string yang_document(Shape shape, int ports) {
    const bool tree = shape == Shape::data_tree;
    JsonText json;
    json.raw(tree ? "{\"bench:network\":{\"slots\":[" : "{\"bench:network\":{\"ports\":[");
    for (int i = 0; i < ports; i++)
        (tree ? add_yang_node : add_yang_port)(json, i);
    json.raw(tree ? "]}]}}" : "]}}");
    return json.take();
}

const char kYangModule[] = R"(module bench {
  namespace "urn:bench";
  prefix b;
  grouping port {
    leaf uri { type string; }
    leaf name { type string; }
    leaf adminState { type enumeration { enum up; enum down; } }
    leaf mtu { type uint32; }
    leaf speed { type uint64; }
    leaf load { type decimal64 { fraction-digits 2; } }
    leaf enabled { type boolean; }
    leaf description { type string; }
  }
  container network {
    config false;
    list ports { uses port; }
    list slots {
      leaf uri { type string; }
      list ports { uses port; }
    }
  }
})";

}  // namespace oru::bench
