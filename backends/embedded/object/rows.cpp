#include "rows.h"

namespace embedded {

Columns::Columns(ORUDoNlist *wanted) {
    EachName each(wanted);
    while (ORUDoName *name = each())
        append(view(oru_do_name_get_strname(name)));
    wanted_ = names_.size();
}

void Columns::append(std::string_view name) {
    const auto column = static_cast<int>(names_.size());
    names_.emplace_back(name);
    const auto [at, is_new] = by_name_.try_emplace(names_.back(), column);
    next_.push_back(is_new ? -1 : at->second);
    at->second = column;
}

void Columns::add(std::string_view name) {
    if (first(name) < 0)
        append(name);
}

void Columns::add_dependencies(const ResourceType &type) {
    for (size_t i = 0; i < names_.size(); i++) {
        const AttributeType *const attribute = type.find_attribute(names_[i]);
        if (attribute == nullptr)
            continue;
        for (const std::string &name : attribute->default_depends_on)
            add(name);
    }
    for (const ResourceType *implementation : type.implementations)
        add_dependencies(*implementation);
}

int Columns::first(std::string_view name) const {
    const auto at = by_name_.find(std::string(name));
    return at != by_name_.end() ? at->second : -1;
}

RowReader::RowReader(const Model &model, const Columns &columns, const SecretReader &secrets,
                     bool return_defaults, RowTaker &taker)
    : model_(model),
      columns_(columns),
      secrets_(secrets),
      return_defaults_(return_defaults),
      taker_(taker),
      values_(columns.size()) {}

void RowReader::set(std::string_view name, const Value &value) {
    for (int column = columns_.first(name); column >= 0; column = columns_.next(column))
        values_[static_cast<size_t>(column)] = value;
}

void RowReader::row(const Row &row) {
    finish();
    has_row_ = true;
    if (kind_ != row.kind) {
        kind_ = row.kind;
        kind_value_ = made_value(oru_do_value_new_string(kind_.c_str()));
        enter_type();
    }
    // what the model does not know is passed over
    if (type_ == nullptr) {
        has_row_ = false;
        return;
    }
    set(ORU_DO_NAME_MR, kind_value_);
    if (columns_.first(ORU_DO_NAME_URI) < 0)
        return;
    const Uri uri =
        made<Uri>(oru_do_uri_new_l(row.label.data(), static_cast<int32_t>(row.label.size())));
    set(ORU_DO_NAME_URI, made_value(oru_do_value_new_mr_uri(uri.get())));
}

void RowReader::enter_type() {
    type_ = model_.find(kind_);
    const ResourceType *const type = return_defaults_ ? type_ : nullptr;
    with_default_.assign(values_.size(), nullptr);
    has_conditional_ = false;
    for (size_t i = 0; type != nullptr && i < values_.size(); i++) {
        const AttributeType *const attribute = type->find_attribute(columns_.names()[i]);
        if (attribute == nullptr || !attribute->has_default())
            continue;
        with_default_[i] = attribute;
        has_conditional_ = has_conditional_ || !attribute->default_depends_on.empty();
    }
}

void RowReader::attribute(const Attribute &attribute) {
    if (!has_row_ || columns_.first(attribute.name) < 0)
        return;
    set(attribute.name, secrets_.open(value_of(attribute)));
}

void RowReader::finish() {
    if (!has_row_)
        return;
    has_row_ = false;
    fill_defaults();
    taker_.take(values_);
    std::fill(values_.begin(), values_.end(), Value());
}

/* Conditions look at what is set, whatever else has a default. */
void RowReader::fill_defaults() {
    const Properties props = has_conditional_ ? properties() : Properties();
    for (size_t i = 0; i < with_default_.size(); i++) {
        if (!values_[i] && with_default_[i] != nullptr)
            values_[i] = with_default_[i]->default_under(props.get());
    }
}

Properties RowReader::properties() const {
    Properties props = made<Properties>(oru_do_properties_new());
    for (size_t i = 0; i < values_.size(); i++) {
        if (values_[i])
            set_property(props.get(),
                         made<Name>(oru_do_name_new(columns_.names()[i].c_str())).get(),
                         values_[i]);
    }
    return props;
}

}  // namespace embedded
