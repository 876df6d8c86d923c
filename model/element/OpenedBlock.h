#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Error.h"
#include "ZVSmartZvg/BlockReader.h"
#include "model/element/Budget.h"
#include "model/element/DamageList.h"
#include "model/element/InputStream.h"

namespace ZVSmartModel {

/// "FLOOR:POS" or "BLOCK:POS".
std::string PlaceText(unsigned int table, unsigned int position);

using GeoBlockUse = ZVSmartZvg::CZVLGBlockReader::GeoBlockUse;

#if defined(__EMSCRIPTEN__) && !defined(__EMSCRIPTEN_PTHREADS__)
constexpr bool hasThreads = false;  // and what only they do is left out of what is sent
#else
constexpr bool hasThreads = true;
#endif

/// An input, opened; see OpenInput for files.
class OpenedFile {
  public:
    /// A file; messages name it `path`.
    OpenedFile(std::unique_ptr<InputStream> file, const std::string& path)
        : path(path), file(std::move(file)), stream(this->file.get()) {}
    /// A host's stream, which is borrowed.
    OpenedFile(ZVSmartFormat::CZVFTInStream& stream, const std::string& path)
        : path(path), stream(&stream) {}

    ZVSmartFormat::CZVFTInStream& Stream() { return *stream; }
    /// Whether it is a host's stream.
    bool IsHosts() const { return file == nullptr; }
    const std::string& Path() const { return path; }

    /// Throws Error InputOutput where a read has failed: nothing that was found is true then.
    void ThrowIfUnread() const;
    /// The same for bytes that are known not to have come, whatever the reason.
    [[noreturn]] void ThrowUnread() const;

  private:
    std::string path;
    std::unique_ptr<InputStream> file;  ///< null for a host's stream
    ZVSmartFormat::CZVFTInStream* stream;
};

/// A block file, opened for queries. What is wrong with the file becomes a Error that names
/// the file, the place in it and the reason.
///
/// What cannot be read, and what an answer leaves out without saying so, is remembered as damage,
/// so that a command can show what is whole before `ThrowIfDamaged` ends it. So is where the
/// command's budget was used up: what follows in the file is as if it were not there. Each function
/// here throws Error InputOutput where the system does not deliver the file.
class OpenedBlock {
  public:
    /// Throws Error InputOutput for a file that cannot be opened, Damaged for one that is no
    /// block file or has no readable index. `limits` is borrowed, and charged for what is read.
    /// Of `options` the cache and the threads hold.
    OpenedBlock(OpenedFile file, Budget& limits, const OpenOptions& options = {});

    ZVSmartZvg::CZVLGBlockReader& Reader() { return reader; }
    Budget& Limits() { return limits; }
    const std::string& Path() const { return file.Path(); }
    unsigned long long FileBytes() { return file.Stream().GetSize(); }

    /// A floor's name and its order; empty and ZVLG_NONE, remembered as damage, where they cannot
    /// be read.
    std::wstring FloorName(unsigned int floor);
    unsigned int FloorOrder(unsigned int floor);
    /// A floor's two values of the host's own; 0, remembered as damage, as above.
    std::pair<unsigned long long, unsigned long long> FloorData(unsigned int floor);
    /// The same as the elevation and the height, in metres, that this library writes.
    std::pair<double, double> FloorMetres(unsigned int floor);

    /// The floor that `text` names: by its number where there is a floor with that number, else
    /// by its name. Throws Error NotFound; Damaged where it may be one whose name is damaged.
    unsigned int FindFloor(const std::string& text);

    /// The first floor and the one behind the last: of all, or of the one that is named.
    std::pair<unsigned int, unsigned int> FindFloors(const std::optional<std::string>& text);

    /// The number of components on a floor. A floor whose components cannot be decoded counts 0
    /// and is remembered as damage.
    unsigned int FloorCompNum(unsigned int floor);
    /// The number of geometries in a block, as above.
    unsigned int GeoNumInBlock(unsigned int block);

    /// Reads the component at `index`, which is within the floor's number of components. False,
    /// remembered as damage, where it cannot be read.
    bool ReadComp(const ZVSmartZvg::SZVLGCompIndex& index, ZVSmartZvg::SZVLGZvgComp& comp);
    /// The same where not all of its properties are wanted.
    bool ReadComp(const ZVSmartZvg::SZVLGCompIndex& index, const ZVSmartZvg::SZVLGCompParts& parts,
                  ZVSmartZvg::SZVLGZvgComp& comp);
    /// The same in place, where its classes are not wanted: `view` holds until this is asked again.
    bool ReadView(const ZVSmartZvg::SZVLGCompIndex& index, const ZVSmartZvg::SZVLGCompParts& parts,
                  ZVSmartZvg::SZVLGCompView& view);
    /// Whether the last answer hid nothing that is damaged.
    bool IsAnswerWhole() const { return isAnswerWhole; }
    /// Reads the component at `index`. Throws Error, NotFound, where there is none, and Damaged
    /// where it, or whether it is there, cannot be read.
    void ReadElement(const ZVSmartZvg::SZVLGCompIndex& index, ZVSmartZvg::SZVLGZvgComp& comp);
    /// The same where `read` reads it, and says whether it could.
    void ReadElement(const ZVSmartZvg::SZVLGCompIndex& index, const std::function<bool()>& read);
    /// Does `act`. False where the budget was used up before or is by it, which is remembered:
    /// `what` and what follows are left out.
    template <class Act>
    bool Within(const std::string& what, Act act) {
        if (!leftOut.empty()) return false;
        try {
            act();
        } catch (const BudgetUsedUp& end) {
            LeaveOut(what, end);
        }
        return leftOut.empty();
    }

    /// Remembers that the budget was used up: `what` and what follows are left out.
    void LeaveOut(const std::string& what, const BudgetUsedUp& end);

    /// Hands every readable component of a floor to `use(index, comp)`, in order, until the budget
    /// is used up.
    template <class Use>
    void ForEachComp(unsigned int floor, Use use) {
        ForEachComp(floor, ZVSmartZvg::SZVLGCompParts(), use);
    }
    /// The same where not all of their properties are wanted.
    template <class Use>
    void ForEachComp(unsigned int floor, const ZVSmartZvg::SZVLGCompParts& parts, Use use) {
        ForEachComp(floor, {0, ZVSmartZvg::ZVLG_NONE}, parts, use);
    }
    /// The same for the positions from a first one up to one behind the last.
    template <class Use>
    void ForEachComp(unsigned int floor, std::pair<unsigned int, unsigned int> positions,
                     const ZVSmartZvg::SZVLGCompParts& parts, Use use) {
        ZVSmartZvg::SZVLGZvgComp comp;
        const unsigned int behind = std::min(FloorCompNum(floor), positions.second);
        for (unsigned int position = positions.first; position < behind; ++position) {
            const ZVSmartZvg::SZVLGCompIndex index{floor, position};
            try {
                if (ReadComp(index, parts, comp)) use(index, comp);
            } catch (const BudgetUsedUp& end) {
                return LeaveOut("component " + PlaceText(floor, position), end);
            }
        }
    }
    /// Reads a geometry that is within the block's number of geometries. Throws Error Damaged,
    /// which is remembered as well.
    void ReadGeo(const ZVSmartZvg::SZVLGZvgGeoIndex& index, ZVSmartZvg::SZVLGZvgGeo& geo);
    /// Reads the geometry of an identification into `geo`, which is fresh. False where there is
    /// none. Throws as above.
    bool ReadGeo(const std::wstring& identification, ZVSmartZvg::SZVLGZvgGeo& geo);
    /// Reads the preview image; nothing where there is none.
    std::optional<ZVSmartZvg::SZVLGZvgGeoImage> ReadPreview();
    /// The bytes that all blocks take when decoded.
    unsigned int DecodedBytes();

    /// The different damages that were ever remembered, as far as they are told apart.
    const std::vector<Damage>& Damages() const { return damages.All(); }

    /// Gives the next query the budget of a first one, and forgets for what follows below what
    /// former ones met.
    void Renew();

    unsigned int IdentificationNum() { return reader.GetGeoIdentificationNum(); }
    /// The i-th identification and where it leads; false where there is none.
    bool ReadIdentification(unsigned int i, std::wstring& identification,
                            ZVSmartZvg::SZVLGZvgGeoIndex& index) {
        return reader.GetGeoIdentificationByIndex(i, identification, index);
    }
    /// Hands every identification and where it leads to `use(identification, index)`.
    template <class Use>
    void ForEachIdentification(Use use) {
        std::wstring identification;
        ZVSmartZvg::SZVLGZvgGeoIndex index;
        const unsigned int count = IdentificationNum();
        for (unsigned int i = 0; i < count; ++i) {
            if (!ReadIdentification(i, identification, index)) return;
            limits.Work(10 + identification.size());
            use(identification, index);
        }
    }

    /// Whether the query met damage; what opening the file met does not count.
    bool HasMetDamage() const { return metNow.All().size() > metAtOpening.All().size(); }
    /// Throws Error Damaged where the budget was used up.
    void ThrowIfCutShort() const;
    /// What was remembered, as an Error, Damaged; none where nothing was.
    std::optional<Error> Verdict() const;
    /// Throws the same.
    void ThrowIfDamaged() const;

    /// Most of the file is about to be asked for in its order, until EndWalk, and with `geometry`
    /// its bodies as well. Such calls may be nested. See FileWalk.
    /// @{
    void BeginWalk(bool geometry, const GeoBlockUse& use);
    void EndWalk();
    /// @}
    /// Whether such a walk goes on and threads decode for it.
    bool IsReadAhead() const { return hasThreads && walks != 0 && threads > 1; }
    /// Has a geometry block decoded, so that what is decoded ahead is what follows it, and charges
    /// what that takes but for `apart()` steps. Tells nothing: whoever reads a geometry of it is
    /// told what is wrong with it.
    void AwaitGeoBlock(unsigned int number, const std::function<std::uint64_t()>& apart);
    /// Whether a thread other than the caller's may read the file.
    bool MayUseThreads() const { return threads > 1 && !file.IsHosts(); }

    /// An Error about this file.
    Error ErrorAbout(Status status, const std::string& reason,
                     std::uint64_t position = Error::noPosition) const;

  private:
    template <class Query>
    bool Ask(Query query);
    template <class Act>
    auto Decoding(Act act);
    template <class Count>
    unsigned int Counted(const char* what, unsigned int number, Count count);
    template <class Read>
    bool Charged(const ZVSmartZvg::SZVLGZvgGeo& geo, Read read);
    std::optional<Damage> LastDamage();
    void RememberDamage(const Damage& damage);
    [[noreturn]] void ThrowLatestDamage() const;
    [[noreturn]] void ThrowForeign(const std::string& reason);

    OpenedFile file;
    Budget& limits;
    ZVSmartZvg::CZVLGBlockReader reader;
    unsigned int threads;
    unsigned int walks = 0;                             ///< begun and not ended
    unsigned int lastGeoBlock = ZVSmartZvg::ZVLG_NONE;  ///< the one that was asked for last
    Damage latestDamage;
    bool isAnswerWhole = true;
    std::string leftOut;  ///< what, and why; empty while the budget lasts
    DamageList damages, metAtOpening, metNow;
};

/// A walk through most of a file in its order, for as long as it is there: what comes next is
/// decoded ahead, in as many threads as the file was opened with.
class FileWalk {
  public:
    /// What of the file is asked for.
    enum class Through { Elements, Bodies, Nothing };

    /// `use` may be null; else threads hand it what geometry blocks they decode ahead, until the
    /// walk ends.
    FileWalk(OpenedBlock& block, Through through, const GeoBlockUse& use = nullptr)
        : block(block), through(through) {
        if (through != Through::Nothing) block.BeginWalk(through == Through::Bodies, use);
    }
    ~FileWalk() {
        if (through != Through::Nothing) block.EndWalk();
    }
    FileWalk(const FileWalk&) = delete;
    FileWalk& operator=(const FileWalk&) = delete;

  private:
    OpenedBlock& block;
    Through through;
};

/// `text` as a number that is written in digits alone and fits 32 bits.
std::optional<unsigned int> ParseNumber(std::string_view text);

}  // namespace ZVSmartModel
