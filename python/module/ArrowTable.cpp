#include "ArrowTable.h"

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// As the interface has them.
struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    std::int64_t flags;
    std::int64_t n_children;
    ArrowSchema** children;
    ArrowSchema* dictionary;
    void (*release)(ArrowSchema*);
    void* private_data;
};

struct ArrowArray {
    std::int64_t length;
    std::int64_t null_count;
    std::int64_t offset;
    std::int64_t n_buffers;
    std::int64_t n_children;
    const void** buffers;
    ArrowArray** children;
    ArrowArray* dictionary;
    void (*release)(ArrowArray*);
    void* private_data;
};

struct ArrowArrayStream {
    int (*get_schema)(ArrowArrayStream*, ArrowSchema* out);
    int (*get_next)(ArrowArrayStream*, ArrowArray* out);
    const char* (*get_last_error)(ArrowArrayStream*);
    void (*release)(ArrowArrayStream*);
    void* private_data;
};

namespace ZVSmartModel::Python {

namespace {

enum class Kind { Integers, Reals, Texts };

Kind KindOf(const QueryTable& table, std::size_t column) {
    bool reals = false, numbers = false;
    for (const QueryRow& row : table.rows) {
        const QueryValue& value = row[column];
        if (std::holds_alternative<std::string>(value)) return Kind::Texts;
        reals = reals || std::holds_alternative<double>(value);
        numbers = numbers || !std::holds_alternative<std::monostate>(value);
    }
    if (!numbers) return Kind::Texts;
    return reals ? Kind::Reals : Kind::Integers;
}

const char* FormatOf(Kind kind) {
    return kind == Kind::Texts ? "U" : kind == Kind::Reals ? "g" : "l";
}

std::string ValueText(const QueryValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    char digits[32];
    char* end = digits;
    if (const auto* integer = std::get_if<std::int64_t>(&value)) {
        end = std::to_chars(digits, digits + sizeof digits, *integer).ptr;
    } else if (const auto* real = std::get_if<double>(&value)) {
        end = std::to_chars(digits, digits + sizeof digits, *real).ptr;
    }
    return {digits, end};
}

/// What an array points into, with the array itself where it is a child.
struct Column {
    std::vector<std::uint8_t> valid;     // a bit each
    std::vector<std::int64_t> integers;  // or the ends of texts
    std::vector<double> reals;
    std::string texts;
    const void* buffers[3] = {};
    ArrowArray array = {};
};

void Fill(Column& column, const QueryTable& table, std::size_t number, Kind kind) {
    column.valid.resize(table.rows.size() / 8 + 1);
    if (kind == Kind::Texts) column.integers.push_back(0);
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        const QueryValue& value = table.rows[i][number];
        const bool isNull = std::holds_alternative<std::monostate>(value);
        if (isNull) ++column.array.null_count;
        if (!isNull) column.valid[i / 8] |= static_cast<std::uint8_t>(1U << i % 8);
        const auto* integer = std::get_if<std::int64_t>(&value);
        const auto* real = std::get_if<double>(&value);
        if (kind == Kind::Integers) column.integers.push_back(integer ? *integer : 0);
        if (kind == Kind::Reals) {
            column.reals.push_back(real ? *real : integer ? static_cast<double>(*integer) : 0);
        }
        if (kind == Kind::Texts) {
            column.texts += ValueText(value);
            column.integers.push_back(static_cast<std::int64_t>(column.texts.size()));
        }
    }
    column.buffers[0] = column.valid.data();
    column.buffers[1] = kind == Kind::Reals ? static_cast<const void*>(column.reals.data())
                                            : static_cast<const void*>(column.integers.data());
    column.buffers[2] = column.texts.data();
    column.array.length = static_cast<std::int64_t>(table.rows.size());
    column.array.n_buffers = kind == Kind::Texts ? 3 : 2;
    column.array.buffers = column.buffers;
    // Children belong to the whole, unless somebody moves them out of it.
    column.array.release = [](ArrowArray* self) { self->release = nullptr; };
}

struct Batch {
    std::vector<Column> columns;
    std::vector<ArrowArray*> children;
    const void* none = nullptr;
};

struct Fields {
    std::vector<std::string> names;
    std::vector<ArrowSchema> schemas;
    std::vector<ArrowSchema*> children;
};

struct Stream {
    std::shared_ptr<const QueryTable> table;
    bool isOver = false;
};

/// An exception must not pass through the interface.
template <class Act>
int Guarded(Act act) {
    try {
        act();
        return 0;
    } catch (...) {
        return ENOMEM;
    }
}

int GetSchema(ArrowArrayStream* self, ArrowSchema* out) {
    return Guarded([&] {
        const QueryTable& table = *static_cast<Stream*>(self->private_data)->table;
        auto fields = std::make_unique<Fields>();
        fields->names = table.columns;
        fields->schemas.resize(table.columns.size());
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            constexpr std::int64_t nullable = 2;
            ArrowSchema& schema = fields->schemas[i];
            schema = {FormatOf(KindOf(table, i)),
                      fields->names[i].c_str(),
                      nullptr,
                      nullable,
                      0,
                      nullptr,
                      nullptr,
                      [](ArrowSchema* child) { child->release = nullptr; },
                      nullptr};
            fields->children.push_back(&schema);
        }
        *out = {"+s",
                "",
                nullptr,
                0,
                static_cast<std::int64_t>(fields->children.size()),
                fields->children.data(),
                nullptr,
                [](ArrowSchema* whole) {
                    delete static_cast<Fields*>(whole->private_data);
                    whole->release = nullptr;
                },
                nullptr};
        out->private_data = fields.release();
    });
}

int GetNext(ArrowArrayStream* self, ArrowArray* out) {
    return Guarded([&] {
        auto& stream = *static_cast<Stream*>(self->private_data);
        *out = {};
        if (std::exchange(stream.isOver, true)) return;
        const QueryTable& table = *stream.table;
        auto batch = std::make_unique<Batch>();
        batch->columns.resize(table.columns.size());
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            Fill(batch->columns[i], table, i, KindOf(table, i));
            batch->children.push_back(&batch->columns[i].array);
        }
        out->length = static_cast<std::int64_t>(table.rows.size());
        out->n_buffers = 1;
        out->buffers = &batch->none;
        out->n_children = static_cast<std::int64_t>(batch->children.size());
        out->children = batch->children.data();
        out->release = [](ArrowArray* whole) {
            delete static_cast<Batch*>(whole->private_data);
            whole->release = nullptr;
        };
        out->private_data = batch.release();
    });
}

}  // namespace

ArrowArrayStream* NewArrowStream(std::shared_ptr<const QueryTable> table) {
    auto state = std::make_unique<Stream>(Stream{std::move(table), false});
    auto stream = std::make_unique<ArrowArrayStream>();
    *stream = {GetSchema, GetNext, [](ArrowArrayStream*) -> const char* { return "out of memory"; },
               [](ArrowArrayStream* self) {
                   delete static_cast<Stream*>(self->private_data);
                   self->release = nullptr;
               },
               state.release()};
    return stream.release();
}

void DeleteArrowStream(ArrowArrayStream* stream) {
    if (stream == nullptr) return;
    if (stream->release != nullptr) stream->release(stream);
    delete stream;
}

}  // namespace ZVSmartModel::Python
