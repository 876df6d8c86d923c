#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <future>
#include <utility>

#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/Diff.h"
#include "model/diff/BlockContents.h"
#include "model/diff/CompDifference.h"
#include "model/diff/Matching.h"
#include "model/element/BlockFileImp.h"
#include "model/element/ElementRecord.h"
#include "model/element/ProgressPace.h"
#include "model/element/RecordBytes.h"
#include "model/element/RecordNames.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

BlockContents ContentsOf(const BlockFile& file, ProgressPace& pace) {
    return file.Internals().Ask([&pace](OpenedBlock& block) { return ReadContents(block, pace); });
}

bool MayUseThreads(const BlockFile& file) {
    return file.Internals().Ask([](OpenedBlock& block) { return block.MayUseThreads(); });
}

/// The contents of two files, which are read side by side where threads may be used.
struct BothContents {
    BothContents(const BlockFile& fileA, const BlockFile& fileB, ProgressPace& pace) {
        if (!MayUseThreads(fileA) || !MayUseThreads(fileB)) {
            a = ContentsOf(fileA, pace);
            b = ContentsOf(fileB, pace);
            return;
        }
        std::atomic<bool> isOver = false;
        const Progress goOn = [&isOver](const std::string&, double) { return !isOver; };
        // Where the system gives no thread, the second one is read behind the first.
        auto other = std::async(std::launch::async | std::launch::deferred, [&fileB, &goOn] {
            ProgressPace silent(goOn);
            return ContentsOf(fileB, silent);
        });
        try {
            a = ContentsOf(fileA, pace);
        } catch (...) {
            isOver = true;
            throw;
        }
        b = other.get();
    }

    BlockContents a, b;
};

template <class Value>
std::optional<Changed<Value>> ChangeOf(const Value& a, const Value& b) {
    if (a == b) return std::nullopt;
    return Changed<Value>{a, b};
}

/// Equal are only values of the same bits.
std::optional<Changed<double>> RealChange(u64 a, u64 b) {
    if (a == b) return std::nullopt;
    return Changed<double>{std::bit_cast<double>(a), std::bit_cast<double>(b)};
}

ElementIndex IndexOf(const CompEntry& comp) {
    return {comp.index.floorIndex, comp.index.compIndex};
}

class Comparison {
  public:
    Comparison(const BlockFile& fileA, const BlockFile& fileB, const Progress& progress)
        : fileA(fileA),
          fileB(fileB),
          pace(progress),
          contents(fileA, fileB, pace),
          a(contents.a),
          b(contents.b) {}

    void Tell(const std::function<bool(const Difference&)>& use) {
        for (const Difference& difference : FloorDifferences()) {
            if (!use(difference)) return;
        }
        const std::vector<MatchedPair> pairs = MatchComponents(a.components, b.components);
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            pace.Tell("comparing", i, pairs.size());
            const auto [inA, inB] = pairs[i];
            const CompEntry* const left = inA ? &a.components[*inA] : nullptr;
            const CompEntry* const right = inB ? &b.components[*inB] : nullptr;
            if (left && right && IsSame(*left, *right)) continue;
            if (!use(ElementDifferenceOf(left, right))) return;
        }
    }

  private:
    /// Numbers the second file's floors as those of the first on the way.
    std::vector<Difference> FloorDifferences() {
        std::vector<Difference> differences;
        std::vector<unsigned int> numbers(b.floors.size());
        auto next = static_cast<unsigned int>(a.floors.size());
        for (const MatchedPair& pair : MatchFloors(a.floors, b.floors)) {
            const auto& [inA, inB] = pair;
            if (inB) numbers[*inB] = inA ? static_cast<unsigned int>(*inA) : next++;
            if (auto difference = FloorDifferenceOf(pair)) {
                differences.push_back(std::move(*difference));
            }
        }
        for (CompEntry& comp : b.components) comp.floor = numbers[comp.floor];
        return differences;
    }

    /// None where both files have the same floor.
    std::optional<Difference> FloorDifferenceOf(const MatchedPair& pair) {
        const auto& [inA, inB] = pair;
        FloorDifference floor;
        if (inA) floor.inA = static_cast<unsigned int>(*inA);
        if (inB) floor.inB = static_cast<unsigned int>(*inB);
        floor.name = inA ? a.floors[*inA].name : b.floors[*inB].name;
        Difference::Kind kind = inA ? Difference::Kind::Removed : Difference::Kind::Added;
        if (inA && inB) {
            if (!Differ(a.floors[*inA], b.floors[*inB], floor)) return std::nullopt;
            kind = floor.renamed ? Difference::Kind::Renamed : Difference::Kind::Changed;
        }
        return Difference{kind, std::move(floor), std::nullopt};
    }

    /// Whether the two differ, and how.
    static bool Differ(const FloorEntry& left, const FloorEntry& right, FloorDifference& floor) {
        floor.renamed = ChangeOf(left.name, right.name);
        floor.order = ChangeOf(left.order, right.order);
        floor.elevation = RealChange(left.dataA, right.dataA);
        floor.height = RealChange(left.dataB, right.dataB);
        return floor.renamed || floor.order || floor.elevation || floor.height;
    }

    static bool IsSame(const CompEntry& left, const CompEntry& right) {
        return left.floor == right.floor && left.aspects == right.aspects &&
               left.geometry == right.geometry;
    }

    /// One side may be null, not both.
    Difference ElementDifferenceOf(const CompEntry* left, const CompEntry* right) {
        ElementDifference element;
        // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): one is there
        element.guid = left ? left->key : right->key;
        if (left) element.inA = IndexOf(*left);
        if (right) element.inB = IndexOf(*right);
        const SZVLGZvgComp first = left ? Read(fileA, *left) : Read(fileB, *right);
        element.className = ToUtf8(first.classLevel2Name);
        element.name = NameOf(first);
        if (!left || !right) {
            const auto kind = left ? Difference::Kind::Removed : Difference::Kind::Added;
            return {kind, std::nullopt, std::move(element)};
        }
        const bool isMoved = left->floor != right->floor;
        if (isMoved) {
            element.floor = {a.floors[left->index.floorIndex].name,
                             b.floors[right->index.floorIndex].name};
        }
        if (left->aspects != right->aspects) {
            CompDifference aspects = DifferenceOf(first, Read(fileB, *right));
            element.properties = std::move(aspects.properties);
            element.classes = std::move(aspects.classes);
            element.fields = std::move(aspects.fields);
            element.fieldValues = std::move(aspects.values);
        }
        element.geometry = left->geometry != right->geometry;
        if (element.geometry) element.distance = DistanceBetween(*element.inA, *element.inB);
        const auto kind = isMoved ? Difference::Kind::Moved : Difference::Kind::Changed;
        return {kind, std::nullopt, std::move(element)};
    }

    /// How far a body was moved; none where it is another one, or cannot be read.
    std::optional<double> DistanceBetween(ElementIndex inA, ElementIndex inB) const {
        constexpr double same = 1e-6;
        Box from, to;
        try {
            from = Measure(ReadBody(fileA, inA)).box;
            to = Measure(ReadBody(fileB, inB)).box;
        } catch (const Error& error) {
            if (error.GetStatus() != Status::Damaged) throw;
            return std::nullopt;
        }
        if (from.IsEmpty() || to.IsEmpty()) return std::nullopt;
        double square = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double low = to.low[axis] - from.low[axis];
            const double high = to.high[axis] - from.high[axis];
            const double size = from.high[axis] - from.low[axis];
            if (!(std::fabs(high - low) <= same * std::max(1.0, size))) return std::nullopt;
            const double way = (low + high) / 2;
            square += way * way;
        }
        const double distance = std::sqrt(square);
        return distance > same ? std::optional(distance) : std::nullopt;
    }

    /// Reads the component anew, within a budget that also accounts for comparing it.
    static SZVLGZvgComp Read(const BlockFile& file, const CompEntry& entry) {
        return file.Internals().GoOn([&entry](OpenedBlock& block) {
            SZVLGZvgComp comp;
            if (!block.ReadComp(entry.index, comp)) block.ThrowIfDamaged();
            const u64 bytes = BytesOf(comp);
            block.Limits().Work(bytes);
            HeldMemory(block.Limits()).Add(2 * bytes);
            return comp;
        });
    }

    const BlockFile& fileA;
    const BlockFile& fileB;
    ProgressPace pace;
    BothContents contents;
    BlockContents &a, &b;
};

}  // namespace

void Compare(const BlockFile& a, const BlockFile& b,
             const std::function<bool(const Difference& difference)>& use,
             const Progress& progress) {
    Comparison(a, b, progress).Tell(use);
}

}  // namespace ZVSmartModel
