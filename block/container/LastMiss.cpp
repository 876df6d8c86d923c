#include "container/LastMiss.h"

#include <new>

#include "stream/Failures.h"

namespace ZVSmartZvg {

void LastMiss::NoteException() {
    try {
        throw;
    } catch (const ZVSmartFormat::OverLimit&) {
        NoteTooLarge("takes more memory than the limit");
    } catch (const ZVSmartFormat::CZVFTStreamException& exception) {
        if (ZVSmartFormat::IsLackOfMemory(exception)) return Clear();
        if (ZVSmartFormat::IsForeignFile(exception)) return NoteAbsent();
        NoteDamaged("is damaged");
    } catch (const std::bad_alloc&) {
        Clear();
    } catch (...) {  // a stream's own
        NoteUnread(position);
    }
}

namespace {

void AppendName(std::string& text, const char* what, LastMiss::u32 number) {
    text += what;
    if (number == LastMiss::none) return;
    text += ' ';
    text += std::to_string(number);
}

}  // namespace

void LastMiss::Tell(SZVLGBlockFinding& finding) const {
    if (kind == EZVLGMiss::None || kind == EZVLGMiss::Absent) return;
    std::string text;
    AppendName(text, subject.what, subject.number);
    if (*subject.record != '\0') text += ", ";
    AppendName(text, subject.record, subject.recordNumber);
    text += kind == EZVLGMiss::Unread ? ": " : " ";
    text += reason;
    finding = {position, std::move(text)};
}

}  // namespace ZVSmartZvg
