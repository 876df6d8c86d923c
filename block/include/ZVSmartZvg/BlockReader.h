#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/BlockFinding.h"
#include "ZVSmartZvg/BlockHeadInfo.h"
#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/CompIndex.h"
#include "ZVSmartZvg/CompView.h"
#include "ZVSmartZvg/Export.h"
#include "ZVSmartZvg/Geo.h"
#include "ZVSmartZvg/GeoIndex.h"

namespace ZVSmartZvg {

/// What a query's neutral answer, or its exception, stands for.
enum class EZVLGMiss : unsigned char {
    None,      ///< the last query found what it was asked for
    Absent,    ///< the file has no such thing
    Damaged,   ///< the file has it, but its bytes are damaged
    Unread,    ///< the stream failed to deliver bytes that it has
    TooLarge,  ///< the file has it, but reading it takes more than `SetDecodedBlockLimit` allows
};

/// Opens a block file and answers queries. `Init` reads the head and the index; geometry blocks
/// and floors are decoded when they are asked for and kept in two small caches.
///
/// Untrusted files are safe: a query on a damaged file returns a neutral result or throws
/// CZVFTStreamException, and takes no memory beyond `SetDecodedBlockLimit`. Every
/// query leaves the stream's position as it was. A block that does not decode answers like one
/// that is not there; `GetLastMiss` tells the two apart. Before `Init`, and after a failed one,
/// lookups answer neutrally.
///
/// One thread at a time uses a reader and its stream; several readers, each with a stream of its
/// own, may run in several threads.
class ZVLG_API CZVLGBlockReader {
  public:
    CZVLGBlockReader();
    ~CZVLGBlockReader();
    CZVLGBlockReader(const CZVLGBlockReader&) = delete;
    CZVLGBlockReader& operator=(const CZVLGBlockReader&) = delete;

    /// What one call may take: the decoded size of a block, in bytes, and the memory of the
    /// records that the call reads. A block that announces more does not decode, a record that
    /// would take more is refused as "seek over buffer size". Unless set a block may have
    /// 0xFFFFFFFF bytes, which is the most, and records may take 256 MiB. It stays for every later
    /// `Init`.
    void SetDecodedBlockLimit(unsigned long long bytes);

    /// From the next `Init` on decoded geometry blocks and floors are kept by the bytes that they
    /// take together, whatever their number: where they take more than `bytes` those go that were
    /// used longest ago, but the one that was used last stays, however large, and so does a last
    /// floor beside geometry blocks. With 0, which is the default, the limits that `Init` is given
    /// hold.
    void SetCacheBytes(unsigned long long bytes);

    /// Opens the file at `in`'s position, which becomes the file's base; `in` is borrowed and
    /// must outlive the reader or its next `Init`. The limits are numbers of decoded geometry
    /// blocks and floors that are kept; 0 means 3 and 5.
    ///
    /// Throws CZVFTStreamException where the head cannot be read: "it's not zvg file format",
    /// "it's upper zvg format", or "seek over buffer size" where it is cut short or a count in it
    /// cannot be. Whatever is wrong behind the head gives false: a file that is cut short there or
    /// was never finished, an index block that does not decode or whose tables are damaged. The
    /// head, the floor count and the block count then stand as far as they were read. Memory,
    /// file and host streams give the same answer; what a host's stream throws passes.
    ///
    /// Another call closes the file before and opens the next as a new reader would; only
    /// `SetDecodedBlockLimit` and `SetCacheBytes` stay. After false or an exception `in` is not
    /// touched any more.
    bool Init(ZVSmartFormat::CZVFTInStream* in, unsigned int geoBlockCacheLimit = 0,
              unsigned int floorCacheLimit = 0);

    /// Says that most of the open file is about to be asked for, floors and geometry blocks each by
    /// ascending numbers: while one is looked at, so many threads, up to 64, decode the floors and
    /// the geometry blocks that come next, two of each for each thread; with `geometry` they begin
    /// at once, else when the first is asked for. With 0 or 1 threads, and with the next `Init` or
    /// `CleanInnerBuffer`, that ends, and what was decoded ahead is forgotten. Without this call
    /// there is no thread.
    ///
    /// Answers do not depend on it: what is wrong with a block is told to whoever asks for it. The
    /// stream is read by the calling thread alone, a few blocks ahead. Once the floors,
    /// or the blocks, that were read ahead take 64 MiB, encoded and decoded, no more are, and one
    /// of more than that is decoded when it is asked for. Throws std::bad_alloc where memory runs
    /// out.
    void SetReadAhead(unsigned int threads, bool geometry = false);

    /// Reads a geometry of one block into `geo`, which is fresh, by its number there. False where
    /// there is none. Throws CZVFTStreamException, with `geo` partly filled, where it is damaged.
    using ReadGeoOfBlock = std::function<bool(unsigned int i, SZVLGZvgGeo& geo)>;
    /// Gets a geometry block that was decoded ahead, by its number, and how many geometries it has.
    /// `read` holds until this returns.
    using GeoBlockUse =
        std::function<void(unsigned int block, unsigned int geoNum, const ReadGeoOfBlock& read)>;

    /// As `SetReadAhead` with `geometry`, where each geometry block that is decoded ahead is also
    /// handed to `use`, by the thread that has decoded it: several at once, and none of them the
    /// caller's. Whoever asks for a block waits until `use` has returned, and so does what ends
    /// reading ahead; from then on `read` gives false. A block that is decoded when it is asked for
    /// `use` does not get, so it must not be relied on. What it throws is lost.
    void SetGeoReadAhead(unsigned int threads, const GeoBlockUse& use);

    /// What hid behind the answer to the last query, `Init` included. For all but None and Absent
    /// `finding` is replaced by the place, from the file's base, and the reason in one line;
    /// otherwise it stays.
    ///
    /// - None: the answer is whole. Also where memory ran out, which says nothing of the file.
    /// - Absent: a number out of range, an identification that the index does not have, a
    ///   geometry without bytes, a preview without an image; any query before `Init`; an `Init`
    ///   that throws "it's not zvg file format" or "it's upper zvg format".
    /// - Damaged: a block that does not decode; a record that cannot be located or read; an
    ///   identification that leads to no stored geometry; a component that refers to rows which
    ///   are not there, so that fields which it has are left empty; a section whose count, size and
    ///   place contradict each other, so that records may be hidden. The last is also told by an
    ///   `Init` that returns true, and by the queries for numbers of records and for one beyond
    ///   the count.
    /// - TooLarge: a block that announces more, or a record that takes more, than
    ///   `SetDecodedBlockLimit` allows.
    /// - Unread: a read or a seek within the size that the stream tells failed or fell short.
    ///
    /// After a failed `Init` every query is told as that `Init` was. `GetVersion`, `GetHeadInfo`,
    /// `CleanInnerBuffer` and `SetDecodedBlockLimit` are no queries.
    EZVLGMiss GetLastMiss(SZVLGBlockFinding& finding);

    /// Whether what `Init` read does not fit together, though the file may have opened: section
    /// heads that contradict themselves, sections that do not meet, records that end before or
    /// behind their section's end, identifications of geometry blocks that are not there, an index
    /// that does not decode. Floors or geometries may then be hidden, and numbers of them too low.
    /// `finding` is replaced by the first such place, from the file's base, and the reason. False,
    /// with `finding` unchanged, where all fits, before `Init`, and where `Init` threw. It costs
    /// nothing to ask; CZVLGBlockVerifier checks everything. Through a CZVFTCachedInStream a last
    /// record is looked at where it is kept already.
    bool GetStructureFinding(SZVLGBlockFinding& finding);

    /// The file's format version.
    unsigned int GetVersion();
    /// Copies what the file says about itself.
    void GetHeadInfo(SZVLGZvgBlockHeadInfo& head);
    /// The bytes that all blocks take when decoded, modulo 2³²; nothing is decoded.
    unsigned int GetEstimatedDataSize();
    /// Empties both caches and frees what else is held for later queries.
    void CleanInnerBuffer();

    /// The number of floors.
    unsigned int GetFloorNum();
    /// The number of components on a floor; 0 for a floor that is not there.
    unsigned int GetFloorCompNum(unsigned int floor);
    /// The floor's name; empty for a floor that is not there. Decodes nothing.
    std::wstring GetFloorNameByIndex(unsigned int floor);
    /// The floor's order; 0xFFFFFFFF for a floor that is not there. Decodes nothing.
    unsigned int GetFloorOrderByIndex(unsigned int floor);
    /// Replaces `dataA` and `dataB` by the floor's two values of the host's own, which its
    /// components have as `classLevel1DataA` and `classLevel1DataB`. False, with both unchanged,
    /// for a floor that is not there. Throws CZVFTStreamException, with both unchanged, where the
    /// floor's record is damaged. Decodes nothing.
    bool GetFloorDataByIndex(unsigned int floor, unsigned long long& dataA,
                             unsigned long long& dataB);
    /// Replaces `names` by the names of all floors, in order.
    void GetAllFloorName(std::vector<std::wstring>& names);
    /// Replaces `comp` by the component at `index`. False, with `comp` unchanged, where there is
    /// none. Throws CZVFTStreamException, with `comp` unchanged, where its bytes are damaged. A
    /// loop that reads into one record is faster than one with a record for each component.
    bool GetCompByIndex(const SZVLGCompIndex& index, SZVLGZvgComp& comp);
    /// The same where not all of its properties are wanted: the others are passed, undecoded.
    bool GetCompPartsByIndex(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                             SZVLGZvgComp& comp);
    /// The same in place: `view` looks into the decoded floor and holds until the next call of this
    /// reader. Classes and owner are not looked up, so that damage to them is not met. Where there
    /// is no such component, or where it throws, the view holds nothing but `byteCount`.
    bool GetCompViewByIndex(const SZVLGCompIndex& index, const SZVLGCompParts& parts,
                            SZVLGCompView& view);

    /// Reads the geometry stored under `identification` into `geo`. Pass a fresh record: lists
    /// that the stored one does not have keep what they held. False where there is none. Throws
    /// CZVFTStreamException, with `geo` partly filled, where its bytes are damaged.
    bool GetGeoByIdentification(const std::wstring& identification, SZVLGZvgGeo& geo);
    /// The same for a geometry whose place is known.
    bool GetGeoByIndex(const SZVLGZvgGeoIndex& index, SZVLGZvgGeo& geo);
    /// Replaces `image` by a copy of the preview image. False, with `image` unchanged, where the
    /// file has none.
    bool GetPreviewImage(SZVLGZvgGeoImage& image);

    /// The number of geometry blocks.
    unsigned int GetGeoBlockNum();
    /// The number of geometries in a block; 0 for a block that is not there.
    unsigned int GetGeoNumInBlock(unsigned int block);
    /// The number of identifications.
    unsigned int GetGeoIdentificationNum();
    /// The i-th identification in ascending order of its UTF-16 units, and where it leads. False,
    /// with both unchanged, for an `i` that is not there.
    bool GetGeoIdentificationByIndex(unsigned int i, std::wstring& identification,
                                     SZVLGZvgGeoIndex& index);

  private:
    class ZVFT_LOCAL Imp;
    std::unique_ptr<Imp> imp;
};

}  // namespace ZVSmartZvg
