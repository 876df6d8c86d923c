#include "web/native/CallRequest.h"

#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>
#include <system_error>

namespace ZVSmartModel::Web {

namespace {

Error Misfit(std::string_view what) {
    return Error(Status::Usage, "the request says nothing: " + std::string(what));
}

/// Takes texts off a request, one by one.
class Texts {
  public:
    Texts(const std::uint8_t* bytes, std::uint32_t size) : next(bytes), left(size) {}

    bool AtEnd() const { return left == 0; }
    std::string Next() {
        std::uint32_t size = 0;
        if (left < sizeof size) throw Misfit("a text is cut short");
        std::memcpy(&size, next, sizeof size);
        if (left - sizeof size < size) throw Misfit("a text is cut short");
        std::string text(reinterpret_cast<const char*>(next) + sizeof size, size);
        next += sizeof size + size;
        left -= static_cast<std::uint32_t>(sizeof size) + size;
        return text;
    }

  private:
    const std::uint8_t* next;
    std::uint32_t left;
};

template <class Number>
Number NumberOf(const std::string& text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) throw Misfit(text);
    return number;
}

/// Of "FLOOR:POS".
ElementIndex PlaceOf(const std::string& text) {
    ElementIndex place;
    const char* const end = text.data() + text.size();
    const auto floor = std::from_chars(text.data(), end, place.floor);
    if (floor.ec != std::errc() || floor.ptr == end || *floor.ptr != ':') throw Misfit(text);
    const auto position = std::from_chars(floor.ptr + 1, end, place.position);
    if (position.ec != std::errc() || position.ptr != end) throw Misfit(text);
    return place;
}

Normals NormalsOf(const std::string& text) {
    if (text == "none") return Normals::None;
    if (text == "flat") return Normals::Flat;
    if (text == "smooth") return Normals::Smooth;
    throw Misfit(text);
}

using Take = void (*)(Request& request, Texts& texts);
struct Field {
    std::string_view name;
    Take take;
};

constexpr Field fields[] = {
    {"floor", [](Request& to, Texts& from) { to.selection.floor = from.Next(); }},
    {"class", [](Request& to, Texts& from) { to.selection.classNames.push_back(from.Next()); }},
    {"element",
     [](Request& to, Texts& from) { to.selection.elements.push_back(PlaceOf(from.Next())); }},
    {"property",  // its name, then its value
     [](Request& to, Texts& from) {
         PropertyTest test;
         test.name = from.Next();
         test.value = from.Next();
         to.selection.properties.push_back(test);
     }},
    {"rooms", [](Request& to, Texts& from) { to.selection.rooms = from.Next() == "true"; }},
    {"guid", [](Request& to, Texts& from) { to.guid = from.Next(); }},
    {"name", [](Request& to, Texts& from) { to.name = from.Next(); }},
    {"text", [](Request& to, Texts& from) { to.text = from.Next(); }},
    {"normals", [](Request& to, Texts& from) { to.body.normals = NormalsOf(from.Next()); }},
    {"creaseAngle",
     [](Request& to, Texts& from) { to.body.creaseAngle = NumberOf<double>(from.Next()); }},
    {"chordError",
     [](Request& to, Texts& from) { to.body.chordError = NumberOf<double>(from.Next()); }},
    {"curves", [](Request& to, Texts& from) { to.body.curves = from.Next() == "true"; }},
    {"elementsAtOnce",
     [](Request& to, Texts& from) { to.elementsAtOnce = NumberOf<unsigned int>(from.Next()); }},
    {"doubles", [](Request& to, Texts& from) { to.takesDoubles = from.Next() == "true"; }},
};

}  // namespace

Request Request::Of(const std::uint8_t* bytes, std::uint32_t size) {
    Request request;
    for (Texts texts(bytes, size); !texts.AtEnd();) {
        const std::string name = texts.Next();
        const Field* field = std::begin(fields);
        while (field != std::end(fields) && field->name != name) ++field;
        if (field == std::end(fields)) throw Misfit(name);
        field->take(request, texts);
    }
    return request;
}

}  // namespace ZVSmartModel::Web
