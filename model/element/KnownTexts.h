#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string_view>
#include <vector>

#include "ZVSmartZvg/CompView.h"

namespace ZVSmartModel {

/// A text that elements repeat, the name of a property or what its companion says, taken apart.
struct KnownText {
    std::string_view stored;  ///< as it lies in a file
    std::string_view text;    ///< the same in UTF-8
    /// Of a name: what stands before the first dot, and behind it.
    /// @{
    std::string_view set, name;
    /// @}
    /// Of what a companion says: what stands before the first blank, and behind it.
    /// @{
    std::string_view kind, unit;
    /// @}

    // What came with it last, which mostly comes again.
    KnownText* next = nullptr;  ///< the name of the property behind
    KnownText* said = nullptr;  ///< by the companion
};

/// Texts that are kept once however often they come.
class KnownTexts {
  public:
    /// What lies there, which is expected to be what was expected there before; valid until
    /// `ForgetIfMany`.
    KnownText& Of(const ZVSmartZvg::SZVLGTextView& text, KnownText*& expected) {
        if (expected == nullptr || !IsSame(expected->stored, text)) expected = &Find(text);
        return *expected;
    }

    /// What stands before the first property of an element or of a material.
    /// @{
    KnownText& BeforeElements() { return beforeElements; }
    KnownText& BeforeMaterials() { return beforeMaterials; }
    /// @}

    /// Forgets them all where they take so much memory that a file must be unlike others.
    void ForgetIfMany();

  private:
    static bool IsSame(std::string_view stored, const ZVSmartZvg::SZVLGTextView& text);
    KnownText& Find(const ZVSmartZvg::SZVLGTextView& text);
    KnownText& Add(const ZVSmartZvg::SZVLGTextView& text);
    char* Room(std::size_t byteCount);
    void Grow();

    KnownText beforeElements, beforeMaterials;
    std::deque<KnownText> all;
    /// By hash, in groups: a full group gives up one, which is then kept twice at worst.
    std::vector<KnownText*> table;
    std::vector<std::unique_ptr<char[]>> pieces;  ///< that hold the texts
    char* free = nullptr;                         ///< of the last of them
    std::size_t left = 0, taken = 0;              ///< bytes of the last, and of all
};

/// Whether a name is that of the companion of a property: the same and a mark.
bool IsCompanion(const ZVSmartZvg::SZVLGTextView& name, const KnownText& property);

}  // namespace ZVSmartModel
