#include <span>

#include "session.h"

namespace embedded {

namespace {

constexpr uint32_t kPage = 500;  // rows that are read at once where the number is left to us

class Cursor final : public RowTaker {
  public:
    explicit Cursor(std::shared_ptr<const Source> source, ORUDoNlist *attributes)
        : source_(std::move(source)), columns_(attributes) {
        table_.owner = this;
        ORUDtlCursor &entries = table_.table;
        entries.cursor_close = [](ORUDtlCursor *table) -> int32_t {
            delete &Table::of(table);
            return ORU_OK;
        };
        entries.cursor_get_next = [](ORUDtlCursor *table, uint32_t count, ORUDoVtable *rows) {
            return Table::of(table).get_next(count, rows);
        };
        entries.cursor_get_error_ifc = [](ORUDtlCursor *table) {
            return Table::of(table).errors_.table();
        };
    }

    ORUDtlCursor *table() { return &table_.table; }

    int32_t open(std::string_view address, ORUDoNvlist *where, ORUDoNlist *order,
                 bool return_defaults) {
        Query query;
        query.at = source_->store->head();
        const std::optional<Members> members = source_->resolve_collection(address, query.at);
        if (!members)
            return ORU_RC_NO_SUCH_COLLECTION;
        query.ranges = members->ranges;
        if (members->is_chosen)
            choose_kinds(*members->type, query);
        clause_ = NameValueList::share(where);
        where_ = std::make_unique<Where>(where, *members->type, return_defaults);
        query.where = where_->condition();
        std::string fault;
        if (!read_order(order, *members->type, query, texts_, fault))
            return ORU_RC_NO_SUCH_ATTRIBUTE;
        read_columns(*members->type, return_defaults, query);
        scan_ = source_->store->scan(std::move(query));
        return ORU_OK;
    }

  private:
    using Table = OwnedTable<ORUDtlCursor, Cursor>;

    static void choose_kinds(const ResourceType &type, Query &query) {
        query.kinds.push_back(type.name);
        for (const ResourceType *implementation : type.implementations)
            query.kinds.push_back(implementation->name);
    }

    void read_columns(const ResourceType &type, bool return_defaults, Query &query) {
        for (const std::string &name : where_->names())
            columns_.add(name);
        if (return_defaults)
            columns_.add_dependencies(type);
        if (where_->has_rest())
            rest_names_ = name_list(columns_.names());
        query.names = columns_.names();
        reader_ = std::make_unique<RowReader>(*source_->model, columns_, *source_->secrets,
                                              return_defaults, *this);
    }

    static NameList name_list(const std::vector<std::string> &names) {
        NameList list = made<NameList>(oru_do_nlist_new());
        for (const std::string &name : names)
            oru_do_nlist_add_string(list.get(), name.c_str());
        return list;
    }

    /* Rows that the store gave may not fit the rest of the clause, so that a batch may need several
       of its own. */
    int32_t get_next(uint32_t count, ORUDoVtable *rows) {
        return errors_.guard([&]() -> int32_t {
            rows_ = rows;
            taken_ = 0;
            ReadStatus status = ReadStatus::more;
            while (status == ReadStatus::more && (count == 0 || taken_ < count)) {
                status = scan_->next(count == 0 ? kPage : count - taken_, *reader_);
                reader_->finish();
            }
            if (status == ReadStatus::expired)
                return errors_.fail(ORU_RC_OBJECT_UNUSABLE,
                                    "the state that the cursor reads is not kept any more");
            return status == ReadStatus::more ? ORU_OK : ORU_RC_NO_MORE_VALUE;
        });
    }

    void take(const std::vector<Value> &values) override {
        if (where_->has_rest() && !where_->fits(rest_names_.get(), list(values).get()))
            return;
        const ValueList row = list({values.data(), columns_.wanted()});
        if (oru_do_vtable_add(rows_, row.get()) < 0)
            throw std::bad_alloc();
        taken_++;
    }

    static ValueList list(std::span<const Value> values) {
        ValueList row = made<ValueList>(oru_do_vlist_new());
        for (const Value &value : values) {
            const int32_t length =
                value ? oru_do_vlist_add(row.get(), value.get()) : oru_do_vlist_add_null(row.get());
            if (length < 0)
                throw std::bad_alloc();
        }
        return row;
    }

    Table table_;
    std::shared_ptr<const Source> source_;
    Columns columns_;
    NameValueList clause_; /* values of it are lent to the scan */
    Texts texts_;
    std::unique_ptr<Where> where_;
    NameList rest_names_;
    std::unique_ptr<RowReader> reader_;
    std::unique_ptr<Scan> scan_;
    ErrorHolder errors_;
    ORUDoVtable *rows_ = nullptr;
    uint32_t taken_ = 0;
};

}  // namespace

CollectionInterface::CollectionInterface(std::shared_ptr<const Source> source)
    : source_(std::move(source)) {
    table_.owner = this;
    table_.table.new_config_cursor = [](ORUCollIfc *table, ORUDoUri *uri, ORUDoNlist *attributes,
                                        ORUDoNvlist *where, ORUDoNlist *order,
                                        uint8_t return_default, ORUDtlCursor **out_cursor) {
        return Table::of(table).open(uri, attributes, where, order, return_default != 0,
                                     out_cursor);
    };
    table_.table.new_oper_cursor = [](ORUCollIfc *table, ORUDoUri *uri, ORUDoNlist *attributes,
                                      ORUDoNvlist *where, ORUDoNlist *order,
                                      ORUDtlCursor **out_cursor) {
        return Table::of(table).open(uri, attributes, where, order, false, out_cursor);
    };
}

int32_t CollectionInterface::open(ORUDoUri *uri, ORUDoNlist *attributes, ORUDoNvlist *where,
                                  ORUDoNlist *order, bool return_defaults,
                                  ORUDtlCursor **out_cursor) {
    try {
        auto cursor = std::make_unique<Cursor>(source_, attributes);
        const int32_t code =
            cursor->open(view(oru_do_uri_get_uri_str(uri)), where, order, return_defaults);
        if (code == ORU_OK)
            *out_cursor = cursor.release()->table();
        return code;
    } catch (const std::exception &fault) {
        return code_of(fault);
    }
}

}  // namespace embedded
