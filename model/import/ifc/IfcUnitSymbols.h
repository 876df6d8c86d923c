#pragma once

#include <map>
#include <memory>
#include <string>

class IfcProject;
class IfcUnit;

namespace ZVSmartModel {

/// The usual symbols of units, in ASCII: "m", "mm2", "ft", "deg", "kg/m3", "W/m2K".
///
/// SI units by their names and prefixes, units that are converted by their names, derived units
/// put together: products with dots, which only an exponent makes needless, then what divides
/// behind one slash. A unit whose name is not known bears its name.
class IfcUnitSymbols {
  public:
    explicit IfcUnitSymbols(const IfcProject& project);

    static std::wstring SymbolOf(const std::shared_ptr<IfcUnit>& unit);

    /// The symbol that the project assigns to a kind of unit, such as "LENGTHUNIT"; empty where
    /// it assigns none.
    std::wstring Assigned(const std::string& unitType) const;
    /// The currency, where the project assigns one.
    static constexpr const char* currency = "MONETARYUNIT";

    const std::map<std::string, std::wstring>& All() const { return symbols; }

  private:
    std::map<std::string, std::wstring> symbols;  ///< by the kind of unit
};

}  // namespace ZVSmartModel
