#pragma once

#include <memory>
#include <string>

#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/BlockHeadInfo.h"
#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/Export.h"
#include "ZVSmartZvg/Geo.h"
#include "ZVSmartZvg/ParamFace.h"

namespace ZVSmartZvg {

/// Writes one block file in one forward pass: `Init`, any number of adds in any order,
/// `WriteEnd`. Geometries are compressed and written as their blocks fill; components are kept
/// as their stored bytes until `WriteEnd`.
///
/// One thread at a time uses a saver and its stream; several savers may run in several threads.
/// What cannot be written throws CZVFTStreamException "encode error"; the file is then
/// incomplete and opens as such, and every later call that would write throws the same. Calls
/// before `Init` and after `WriteEnd` throw "encode error" and store nothing. A call that ran out
/// of memory before it wrote anything can be made again.
class ZVLG_API CZVLGBlockSaver {
  public:
    /// `version`, 0 to 4, is the format version of the file; older versions leave out fields.
    explicit CZVLGBlockSaver(unsigned int version = 4);
    /// Does not finish the file: without `WriteEnd` it stays incomplete.
    ~CZVLGBlockSaver();
    CZVLGBlockSaver(const CZVLGBlockSaver&) = delete;
    CZVLGBlockSaver& operator=(const CZVLGBlockSaver&) = delete;

    /// Begins the file at `out`'s position, which becomes the file's base. `out` is borrowed and
    /// must live until `WriteEnd` returns. `head` is copied. `iniPath` names a file of component
    /// displacement settings; a missing one is ignored. `geosPerBlock` is the number of
    /// geometries per compressed block; 0 means 1000.
    ///
    /// Another call begins another file as a new saver of the same version would: nothing of the
    /// file before is remembered, the numbers of include keys begin anew, and a file without its
    /// `WriteEnd` stays incomplete.
    ///
    /// Throws CZVFTStreamException "encode error" where `out` has no position, as a pipe, or does
    /// not take the head, and "bad relloc memory" where the 20 MiB scratch buffer cannot be had;
    /// the saver is then as before its first `Init`.
    void Init(ZVSmartFormat::CZVFTOutStream* out, const SZVLGZvgBlockHeadInfo& head,
              const std::string& iniPath = "", unsigned int geosPerBlock = 0);

    /// Chooses whether files that later calls of `Init` begin are sealed: whether `WriteEnd` writes
    /// 24 bytes behind their end, by which CZVLGBlockVerifier finds any byte that changed, also in
    /// the texts and numbers that no block's checksum covers. Readers need not know of it. False
    /// unless set; but for these bytes the file is the same.
    void SetSeal(bool seal);

    /// Chooses how many threads compress the blocks of files that later calls of `Init` begin: 1
    /// unless set, up to 64, and 0 counts as 1. The bytes of a file do not depend on it, and `out`
    /// is used by the calling thread alone. With 1 no thread is ever begun. With more, each of them
    /// takes the memory of a block twice, of the compressed one and of the coder (12 times the
    /// block, at most 48 MiB); what a block fails of comes out of a later call than otherwise,
    /// `WriteEnd` at the latest, and the destructor waits for blocks that are being compressed.
    void SetThreads(unsigned int threads);

    /// Replaces the component displacement settings that `Init` read, for a program that opens no
    /// files by then. Components that were added already keep theirs. `settings` is copied.
    void SetDisplacementSettings(const ZVSmartFormat::CZVFTIniFile& settings);

    /// Chooses the coder's faster, weaker setting for every saver of the process.
    void SetEncodeFastMod(bool fast);

    /// Stores `geo` under `identification`. An empty identification is ignored; one that is
    /// already there keeps its first geometry. Ask `IsHaveIdentificationGeo` first: a repeated
    /// geometry may still cost room in the file. Throws "encode error", with nothing stored, for
    /// an image or blob that announces bytes and has none, and for a record that would take more
    /// than 256 MiB when it is read: readers refuse it unless their host allows more.
    void AddIdentificationGeo(const std::wstring& identification, const SZVLGZvgGeo& geo);

    /// Whether `identification` is not empty and has a geometry in this file.
    bool IsHaveIdentificationGeo(const std::wstring& identification);

    /// Stores the file's preview image; its name is replaced. False where the image has no
    /// pixels or the file has a preview already.
    bool AddPreviewImage(const SZVLGZvgGeoImage& image);

    /// Stores a component and the geometries it brings. A component that is on its floor already
    /// is dropped, and so are its geometries: one with the same GUID in `compGuidName` where that
    /// is not all zero, whatever the names, else one with the same name. (What it brings first of
    /// floor and classes stays.) Identification rows go the same way: by GUID where it is not all
    /// zero, else by name and both texts, and the first one's texts stand for all. Throws "encode
    /// error", with nothing stored, where a reference's image or blob announces bytes and has none,
    /// where one of its geometries would take more than 256 MiB when it is read, the component with
    /// its rows more than 192 MiB, or its floor's name or what it brings to a class table more than
    /// 8 MiB.
    void AddComp(const SZVLGZvgComp& comp);

    /// Stores `geo` under a key that the saver makes up, and returns the key.
    std::wstring CreateIncludeBlockGeo(const SZVLGZvgGeo& geo);

    /// Finds or stores the shared geometry of a cylinder face. Faces whose radius, swept angle,
    /// height and local shell agree within 0.001 share one. False, with `rel` unchanged and
    /// nothing stored, for a face that is degenerate or holds a number that is not finite.
    bool GetRelIncludeByCylinderFace(const SZVLGParamCylinderFace& face,
                                     SZVLGZvgGeoRelInclude& rel);

    /// The same for a profile swept about an axis. For a sweep too short to sample
    /// `rel.transform` is set although the result is false.
    bool GetRelIncludeByRevolvedFace(const SZVLGParamRevolvedFace& face,
                                     SZVLGZvgGeoRelInclude& rel);

    /// The same for a ruled face.
    bool GetRelIncludeByRuledFace(const SZVLGParamRuledFace& face, SZVLGZvgGeoRelInclude& rel);

    /// Writes the rest of the file. Call it once: another call throws "encode error". Does not
    /// flush or close the stream.
    void WriteEnd();

    /// Writes a small building to memory, reads it back and says whether it came back whole.
    static bool Test();

  private:
    class ZVFT_LOCAL Imp;
    std::unique_ptr<Imp> imp;
};

}  // namespace ZVSmartZvg
