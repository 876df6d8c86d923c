#pragma once

#include <exception>
#include <new>
#include <optional>

#include "ZVSmartModel/BlockFile.h"
#include "web/native/Answer.h"
#include "web/native/RangeStream.h"

namespace ZVSmartModel::Web {

/// A file that is read as it arrives, and what it answered last.
class Session {
  public:
    /// How a call ends, beside the numbers of Status.
    enum Outcome : int {
        Done = 0,
        Missing = 7,  ///< the answer tells the bytes that are not there: position, size (f64)
    };

    Session(std::uint64_t bytes, const OpenOptions& options) : stream(bytes), options(options) {}

    /// Gives up what was opened, for the file is opened anew.
    void Open();
    /// Throws Error, Usage, where nothing is open.
    BlockFile& File();
    RangeStream& Stream() { return stream; }
    const Answer& LastAnswer() const { return answer; }

    /// Lets `act(answer)` answer from the file, and returns how it ended. Where bytes are not there
    /// nothing that it found counts, even if it ended well: to a walk they look like damage, and to
    /// a lookup like nothing. Whoever brings them asks the same again; until that has ended, all
    /// that was brought is kept.
    template <class Act>
    int Ask(Act act) {
        stream.ForgetMiss();
        return Settle(Do(act));
    }

    /// The same for one JSON text, which `write(json)` writes.
    template <class Write>
    int AskForText(Write write) {
        return Ask([&](Answer& to) {
            Json json;
            write(json);
            to.Put(json.Written());
        });
    }

    /// The same without the file. What `act` throws becomes a status, and an answer that tells it.
    template <class Act>
    int Do(Act act) {
        answer.Clear();
        int outcome = Done;
        try {
            act(answer);
        } catch (const Error& error) {
            outcome = Tell(error);
        } catch (const std::bad_alloc&) {
            outcome = Tell(Error(Status::Internal, "out of memory"));
        } catch (const std::exception& error) {
            outcome = Tell(Error(Status::Internal, error.what()));
        }
        return outcome;
    }

  private:
    int Tell(const Error& error);
    int Settle(int outcome);

    RangeStream stream;
    OpenOptions options;
    std::optional<BlockFile> file;
    Answer answer;
};

}  // namespace ZVSmartModel::Web
