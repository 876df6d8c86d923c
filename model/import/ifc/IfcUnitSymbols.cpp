#include "model/import/ifc/IfcUnitSymbols.h"

#include <ifcpp/IFC4/include/IfcContextDependentUnit.h>
#include <ifcpp/IFC4/include/IfcConversionBasedUnit.h>
#include <ifcpp/IFC4/include/IfcDerivedUnit.h>
#include <ifcpp/IFC4/include/IfcDerivedUnitElement.h>
#include <ifcpp/IFC4/include/IfcDerivedUnitEnum.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcMonetaryUnit.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcSIPrefix.h>
#include <ifcpp/IFC4/include/IfcSIUnit.h>
#include <ifcpp/IFC4/include/IfcSIUnitName.h>
#include <ifcpp/IFC4/include/IfcUnitAssignment.h>
#include <ifcpp/IFC4/include/IfcUnitEnum.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>

#include "model/element/Utf8.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

struct UnitSymbol {
    const wchar_t* name;
    const wchar_t* symbol;
};

constexpr UnitSymbol prefixes[] = {
    {L"EXA", L"E"},  {L"PETA", L"P"},  {L"TERA", L"T"},  {L"GIGA", L"G"},
    {L"MEGA", L"M"}, {L"KILO", L"k"},  {L"HECTO", L"h"}, {L"DECA", L"da"},
    {L"DECI", L"d"}, {L"CENTI", L"c"}, {L"MILLI", L"m"}, {L"MICRO", L"u"},
    {L"NANO", L"n"}, {L"PICO", L"p"},  {L"FEMTO", L"f"}, {L"ATTO", L"a"},
};

constexpr UnitSymbol siUnits[] = {
    {L"METRE", L"m"},      {L"SQUARE_METRE", L"m2"}, {L"CUBIC_METRE", L"m3"},
    {L"GRAM", L"g"},       {L"SECOND", L"s"},        {L"RADIAN", L"rad"},
    {L"STERADIAN", L"sr"}, {L"AMPERE", L"A"},        {L"KELVIN", L"K"},
    {L"MOLE", L"mol"},     {L"CANDELA", L"cd"},      {L"DEGREE_CELSIUS", L"degC"},
    {L"HERTZ", L"Hz"},     {L"NEWTON", L"N"},        {L"PASCAL", L"Pa"},
    {L"JOULE", L"J"},      {L"WATT", L"W"},          {L"COULOMB", L"C"},
    {L"VOLT", L"V"},       {L"FARAD", L"F"},         {L"OHM", L"ohm"},
    {L"SIEMENS", L"S"},    {L"WEBER", L"Wb"},        {L"TESLA", L"T"},
    {L"HENRY", L"H"},      {L"LUMEN", L"lm"},        {L"LUX", L"lx"},
    {L"BECQUEREL", L"Bq"}, {L"GRAY", L"Gy"},         {L"SIEVERT", L"Sv"},
};

/// By names in capitals without anything between their words, feet and inches in the singular.
constexpr UnitSymbol convertedUnits[] = {
    {L"INCH", L"in"},
    {L"FOOT", L"ft"},
    {L"YARD", L"yd"},
    {L"MILE", L"mi"},
    {L"USSURVEYFOOT", L"ftUS"},
    {L"SQUAREINCH", L"in2"},
    {L"SQUAREFOOT", L"ft2"},
    {L"SQUAREYARD", L"yd2"},
    {L"SQUAREMILE", L"mi2"},
    {L"ACRE", L"acre"},
    {L"HECTARE", L"ha"},
    {L"CUBICINCH", L"in3"},
    {L"CUBICFOOT", L"ft3"},
    {L"CUBICYARD", L"yd3"},
    {L"LITRE", L"l"},
    {L"LITER", L"l"},
    {L"FLUIDOUNCEUK", L"floz(UK)"},
    {L"FLUIDOUNCEUS", L"floz(US)"},
    {L"PINTUK", L"pt(UK)"},
    {L"PINTUS", L"pt(US)"},
    {L"GALLONUK", L"gal(UK)"},
    {L"GALLONUS", L"gal(US)"},
    {L"GALLON", L"gal"},
    {L"DEGREE", L"deg"},
    {L"GRAD", L"gon"},
    {L"GON", L"gon"},
    {L"OUNCE", L"oz"},
    {L"POUND", L"lb"},
    {L"TONNE", L"t"},
    {L"TONUK", L"ton(UK)"},
    {L"TONUS", L"ton(US)"},
    {L"POUNDFORCE", L"lbf"},
    {L"LBF", L"lbf"},
    {L"KIP", L"kip"},
    {L"PSI", L"psi"},
    {L"KSI", L"ksi"},
    {L"MINUTE", L"min"},
    {L"HOUR", L"h"},
    {L"DAY", L"d"},
    {L"BTU", L"Btu"},
    {L"FAHRENHEIT", L"degF"},
    {L"PERCENT", L"%"},
};

template <std::size_t Size>
const wchar_t* SymbolIn(const UnitSymbol (&table)[Size], const std::wstring& name) {
    const auto* found = std::find_if(std::begin(table), std::end(table),
                                     [&](const UnitSymbol& named) { return name == named.name; });
    return found == std::end(table) ? nullptr : found->symbol;
}

/// "Square feet", "SQUARE_FOOT" and "square-foot" are one.
std::wstring Plain(const std::wstring& name) {
    std::wstring plain;
    for (const wchar_t c : name) {
        if (c >= L'a' && c <= L'z') plain += static_cast<wchar_t>(c - 32);
        if ((c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9')) plain += c;
    }
    if (plain.ends_with(L"FEET")) plain.replace(plain.size() - 4, 4, L"FOOT");
    if (plain.ends_with(L"INCHES")) plain.resize(plain.size() - 2);
    return plain;
}

std::wstring Enumerator(const BuildingObject& value) {
    std::wstring text = value.toString();
    std::erase(text, L'.');
    return text;
}

/// A prefix of a square metre or a cubic metre is that of the metre.
std::wstring SiSymbol(const IfcSIUnit& unit) {
    if (!unit.m_Name) return {};
    const std::wstring name = Enumerator(*unit.m_Name);
    const wchar_t* symbol = SymbolIn(siUnits, name);
    const wchar_t* prefix =
        unit.m_Prefix ? SymbolIn(prefixes, Enumerator(*unit.m_Prefix)) : nullptr;
    return (prefix ? prefix : L"") + (symbol ? std::wstring(symbol) : name);
}

std::wstring NamedSymbol(const std::wstring& name) {
    const wchar_t* symbol = SymbolIn(convertedUnits, Plain(name));
    return symbol ? symbol : name;
}

bool EndsInDigit(const std::wstring& text) {
    return !text.empty() && text.back() >= L'0' && text.back() <= L'9';
}

/// One factor; "m2" squared is "m4".
std::wstring Power(std::wstring symbol, int exponent) {
    if (exponent == 1) return symbol;
    if (EndsInDigit(symbol)) {
        exponent *= symbol.back() - L'0';
        symbol.pop_back();
    }
    return symbol + std::to_wstring(exponent);
}

std::wstring DerivedSymbol(const IfcDerivedUnit& unit) {
    std::wstring above;
    std::wstring below;
    for (const auto& element : unit.m_Elements) {
        if (!element || !element->m_Unit || element->m_Exponent == 0) continue;
        std::wstring& side = element->m_Exponent > 0 ? above : below;
        if (!side.empty() && !EndsInDigit(side)) side += L'.';
        side += Power(IfcUnitSymbols::SymbolOf(element->m_Unit), std::abs(element->m_Exponent));
    }
    if (below.empty()) return above;
    return (above.empty() ? L"1" : above) + L'/' + below;
}

/// What the unit measures, such as "LENGTHUNIT".
std::optional<std::string> TypeOf(const std::shared_ptr<IfcUnit>& unit) {
    std::wstring type;
    if (const auto named = std::dynamic_pointer_cast<IfcNamedUnit>(unit)) {
        if (named->m_UnitType) type = Enumerator(*named->m_UnitType);
    } else if (const auto derived = std::dynamic_pointer_cast<IfcDerivedUnit>(unit)) {
        if (derived->m_UnitType) type = Enumerator(*derived->m_UnitType);
        if (type == L"USERDEFINED") type = TextOf(derived->m_UserDefinedType);
    } else if (std::dynamic_pointer_cast<IfcMonetaryUnit>(unit)) {
        return IfcUnitSymbols::currency;
    }
    if (type.empty()) return std::nullopt;
    return ToUtf8(type);
}

}  // namespace

IfcUnitSymbols::IfcUnitSymbols(const IfcProject& project) {
    if (!project.m_UnitsInContext) return;
    for (const auto& unit : project.m_UnitsInContext->m_Units) {
        const auto type = TypeOf(unit);
        if (type) symbols.emplace(*type, SymbolOf(unit));
    }
}

std::wstring IfcUnitSymbols::SymbolOf(const std::shared_ptr<IfcUnit>& unit) {
    if (const auto si = std::dynamic_pointer_cast<IfcSIUnit>(unit)) return SiSymbol(*si);
    if (const auto converted = std::dynamic_pointer_cast<IfcConversionBasedUnit>(unit)) {
        return NamedSymbol(TextOf(converted->m_Name));
    }
    if (const auto other = std::dynamic_pointer_cast<IfcContextDependentUnit>(unit)) {
        return NamedSymbol(TextOf(other->m_Name));
    }
    if (const auto derived = std::dynamic_pointer_cast<IfcDerivedUnit>(unit)) {
        return DerivedSymbol(*derived);
    }
    if (const auto money = std::dynamic_pointer_cast<IfcMonetaryUnit>(unit)) {
        // An enumerator before IFC4, a label since.
        std::wstring name = TextOf(money->m_Currency);
        std::erase(name, L'.');
        return name;
    }
    return {};
}

std::wstring IfcUnitSymbols::Assigned(const std::string& unitType) const {
    const auto found = symbols.find(unitType);
    return found == symbols.end() ? std::wstring() : found->second;
}

}  // namespace ZVSmartModel
