#include "session.h"

namespace embedded {

namespace {

int32_t add_value(ORUDoVlist *values, const Value &value) {
    const int32_t length =
        value ? oru_do_vlist_add(values, value.get()) : oru_do_vlist_add_null(values);
    return length < 0 ? ORU_RC_MALLOC : ORU_OK;
}

/* The values of the only row, into the caller's list. */
class ValueTaker final : public RowTaker {
  public:
    ValueTaker(size_t wanted, ORUDoVlist *values) : wanted_(wanted), values_(values) {}

    void take(const std::vector<Value> &values) override {
        was_there = true;
        for (size_t i = 0; i < wanted_ && code == ORU_OK; i++)
            code = add_value(values_, values[i]);
    }

    bool was_there = false;
    int32_t code = ORU_OK;

  private:
    size_t wanted_;
    ORUDoVlist *values_;
};

/* The attributes of one row, as properties in the order of the model. */
class PropertyTaker final : public RowSink {
  public:
    PropertyTaker(const Model &model, const SecretReader &secrets, bool wants_operational)
        : model_(model), secrets_(secrets), wants_operational_(wants_operational) {}

    void row(const Row &row) override {
        type_ = model_.find(row.kind);
        values_.resize(type_ != nullptr ? type_->attributes.size() : 0);
    }

    void attribute(const Attribute &attribute) override {
        const AttributeType *const known =
            type_ != nullptr ? type_->find_attribute(attribute.name) : nullptr;
        if (known != nullptr && is_wanted(*known))
            values_[static_cast<size_t>(known - type_->attributes.data())] =
                secrets_.open(value_of(attribute));
    }

    /* Whether the model knows the type of the resource. */
    bool is_known() const { return type_ != nullptr; }

    void finish(ORUDoProperties *props) const {
        for (size_t i = 0; i < values_.size(); i++) {
            if (values_[i])
                set_property(props, type_->attributes[i].object.get(), values_[i]);
        }
    }

  private:
    bool is_wanted(const AttributeType &attribute) const {
        const bool is_operational =
            type_->is_operational() || attribute.role == AttributeType::Role::oper;
        return is_operational == wants_operational_;
    }

    const Model &model_;
    const SecretReader &secrets_;
    bool wants_operational_;
    const ResourceType *type_ = nullptr;
    std::vector<Value> values_; /* by the place of the attribute in the type */
};

}  // namespace

DataInterface::DataInterface(std::shared_ptr<const Source> source)
    : source_(std::move(source)),
      context_(made<Uri>(oru_do_uri_new(source_->addresses.location().c_str()))) {
    table_.owner = this;
    ORUDataIfc &entries = table_.table;
    entries.get_cfg_prop_values = [](ORUDataIfc *table, ORUDoUri *uri, ORUDoNlist *names,
                                     uint8_t return_default, ORUDoVlist *values) {
        return Table::of(table).get_values(uri, names, return_default != 0, values);
    };
    entries.get_oper_prop_values = [](ORUDataIfc *table, ORUDoUri *uri, ORUDoNlist *names,
                                      ORUDoVlist *values) {
        return Table::of(table).get_values(uri, names, false, values);
    };
    entries.get_cfg_props = [](ORUDataIfc *table, ORUDoUri *uri, void *, ORUDoProperties *props) {
        return Table::of(table).get_props(uri, false, props);
    };
    entries.get_oper_props = [](ORUDataIfc *table, ORUDoUri *uri, void *, ORUDoProperties *props) {
        return Table::of(table).get_props(uri, true, props);
    };
    entries.get_context_uri = [](ORUDataIfc *table) { return Table::of(table).context_.get(); };
    entries.invoke_action = [](ORUDataIfc *table, ORUDoUri *, ORUDoName *action, ORUDoProperties *,
                               ORUDoProperties *) {
        // actions are carried out by providers, and there is none behind a file
        ErrorHolder &errors = Table::of(table).errors_;
        return errors.guard([&] {
            const char *const name = action != nullptr ? oru_do_name_get_strname(action) : "";
            const std::string words = "no provider for the action " + std::string(view(name));
            return errors.fail(ORU_RC_UNSUPPORTED_FEATURE, words.c_str());
        });
    };
    entries.get_error_ifc = [](ORUDataIfc *table) { return Table::of(table).errors_.table(); };
}

int32_t DataInterface::no_such_resource(ORUDoUri *uri) {
    const std::string words = "No such resource: " + std::string(view(oru_do_uri_get_uri_str(uri)));
    return errors_.fail(ORU_RC_NO_SUCH_RESOURCE, words.c_str());
}

int32_t DataInterface::get_values(ORUDoUri *uri, ORUDoNlist *names, bool return_defaults,
                                  ORUDoVlist *values) {
    return errors_.guard([&]() -> int32_t {
        const std::optional<Target> target =
            source_->resolve(view(oru_do_uri_get_uri_str(uri)), kNewest);
        if (!target)
            return no_such_resource(uri);
        Columns columns(names);
        if (return_defaults)
            columns.add_dependencies(*target->type);
        ValueTaker taker(columns.wanted(), values);
        RowReader reader(*source_->model, columns, *source_->secrets, return_defaults, taker);
        const ReadStatus status =
            source_->store->read(target->place.key, &columns.names(), kNewest, reader);
        reader.finish();
        if (status == ReadStatus::missing || !taker.was_there)
            return no_such_resource(uri);
        return taker.code;
    });
}

int32_t DataInterface::get_props(ORUDoUri *uri, bool is_operational, ORUDoProperties *props) {
    return errors_.guard([&]() -> int32_t {
        const std::optional<Target> target =
            source_->resolve(view(oru_do_uri_get_uri_str(uri)), kNewest);
        if (!target)
            return no_such_resource(uri);
        PropertyTaker taker(*source_->model, *source_->secrets, is_operational);
        const ReadStatus status = source_->store->read(target->place.key, nullptr, kNewest, taker);
        if (status == ReadStatus::missing || !taker.is_known())
            return no_such_resource(uri);
        taker.finish(props);
        return ORU_OK;
    });
}

}  // namespace embedded
