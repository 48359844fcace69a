#include <algorithm>
#include <span>

#include "session.h"

namespace embedded {

namespace {

// rows that are read at once where the number is left to us, or where not all of them may fit
constexpr uint32_t kPage = 500;

class Cursor final : public RowTaker {
  public:
    enum class Kind : uint8_t { config, oper };

    Cursor(std::shared_ptr<const Source> source, Kind kind, ORUDoNlist *attributes)
        : source_(std::move(source)), kind_(kind), columns_(attributes) {
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
                 bool return_defaults, ErrorHolder &errors) {
        Query query;
        query.at = source_->store->head();
        const std::optional<Members> members = source_->resolve_collection(address, query.at);
        if (!members)
            return errors.fail(ORU_RC_NO_SUCH_COLLECTION,
                               ("No such collection: " + std::string(address)).c_str());
        query.ranges = members->ranges;
        if (members->is_chosen)
            choose_kinds(*members->type, query);
        where_ = std::make_unique<Where>(where, *members->type, return_defaults);
        query.where = where_->condition();
        std::string fault;
        if (!read_order(order, *members->type, return_defaults, query, texts_, fault))
            return errors.fail(ORU_RC_NO_SUCH_ATTRIBUTE,
                               ("there is no attribute to order by: " + fault).c_str());
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
        for (const std::string &name : names) {
            if (oru_do_nlist_add_string(list.get(), name.c_str()) < 1)
                throw std::bad_alloc();
        }
        return list;
    }

    /* A cursor over configuration is asked once where the number is left to it, and gives all. */
    int32_t get_next(uint32_t count, ORUDoVtable *rows) {
        return errors_.guard([&]() -> int32_t {
            if (is_broken_)
                return errors_.fail(ORU_RC_OBJECT_UNUSABLE, "an earlier batch failed");
            is_broken_ = true;
            read_batch(count, rows);
            is_broken_ = false;
            if (status_ == ReadStatus::expired)
                return errors_.fail(ORU_RC_OBJECT_UNUSABLE,
                                    "the state that the cursor reads is not kept any more");
            return status_ == ReadStatus::more || !waiting_.empty() ? ORU_OK : ORU_RC_NO_MORE_VALUE;
        });
    }

    void read_batch(uint32_t count, ORUDoVtable *rows) {
        const uint32_t page = count == 0 ? kPage : count;
        const bool is_all = count == 0 && kind_ == Kind::config;
        for (uint32_t given = 0; is_all || given < page; given++) {
            if (waiting_.empty() && !read_more(is_all ? kPage : page - given))
                break;
            hand_on(rows);
        }
    }

    void hand_on(ORUDoVtable *rows) {
        if (oru_do_vtable_add(rows, waiting_.front().get()) < 0)
            throw std::bad_alloc();
        waiting_.pop_front();
    }

    /* Whether there is a row that waits. Of those that the store gives not all may fit the rest of
       the clause: more are asked for then, and what is too much waits for the next call. */
    bool read_more(uint32_t count) {
        while (waiting_.empty() && status_ == ReadStatus::more) {
            const uint32_t page = std::min(count, kPage);
            status_ = scan_->next(where_->has_rest() ? kPage : page, *reader_);
            reader_->finish();
        }
        return !waiting_.empty();
    }

    void take(const std::vector<Value> &values) override {
        if (!where_->has_rest() || where_->fits(rest_names_.get(), list(values).get()))
            waiting_.push_back(list({values.data(), columns_.wanted()}));
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
    Kind kind_;
    Columns columns_;
    Texts texts_;
    std::unique_ptr<Where> where_;
    NameList rest_names_;
    std::unique_ptr<RowReader> reader_;
    std::unique_ptr<Scan> scan_;
    ErrorHolder errors_;
    std::deque<ValueList> waiting_; /* a page at most */
    ReadStatus status_ = ReadStatus::more;
    bool is_broken_ = false; /* a batch ended on the way, within a row maybe */
};

}  // namespace

CollectionInterface::CollectionInterface(std::shared_ptr<const Source> source, ErrorHolder &errors)
    : source_(std::move(source)), errors_(errors) {
    table_.owner = this;
    table_.table.new_config_cursor = [](ORUCollIfc *table, ORUDoUri *uri, ORUDoNlist *attributes,
                                        ORUDoNvlist *where, ORUDoNlist *order,
                                        uint8_t return_default, ORUDtlCursor **out_cursor) {
        return Table::of(table).open(uri, attributes, where, order, return_default != 0, false,
                                     out_cursor);
    };
    table_.table.new_oper_cursor = [](ORUCollIfc *table, ORUDoUri *uri, ORUDoNlist *attributes,
                                      ORUDoNvlist *where, ORUDoNlist *order,
                                      ORUDtlCursor **out_cursor) {
        return Table::of(table).open(uri, attributes, where, order, false, true, out_cursor);
    };
}

int32_t CollectionInterface::open(ORUDoUri *uri, ORUDoNlist *attributes, ORUDoNvlist *where,
                                  ORUDoNlist *order, bool return_defaults, bool is_operational,
                                  ORUDtlCursor **out_cursor) {
    const std::string_view address = view(oru_do_uri_get_uri_str(uri));
    const int32_t code = errors_.guard([&]() -> int32_t {
        auto cursor = std::make_unique<Cursor>(
            source_, is_operational ? Cursor::Kind::oper : Cursor::Kind::config, attributes);
        const int32_t result = cursor->open(address, where, order, return_defaults, errors_);
        if (result == ORU_OK)
            *out_cursor = cursor.release()->table();
        return result;
    });
    if (code != ORU_OK)
        errors_.trace(address);
    return code;
}

}  // namespace embedded
