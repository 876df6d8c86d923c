#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/BlockFile.h"
#include "model/element/LackOfMemory.h"
#include "model/element/OpenedBlock.h"

namespace ZVSmartModel {

class ElementNames;
class ElementReader;
class BodyReader;

/// What a block file holds open: one reader, which one thread at a time asks.
class BlockFile::Imp {
  public:
    /// `liftedBy` tells a person how to lift the limits: see Budget.
    Imp(OpenedFile file, const OpenOptions& options, const std::string& liftedBy = "")
        : limits(options.unlimited, liftedBy), block(std::move(file), limits, options) {}
    /// Of a file in memory; `bytes` goes with this object.
    Imp(std::vector<std::uint8_t> bytes, const OpenOptions& options);

    /// A block file of what is open.
    static BlockFile Open(OpenedFile file, const OpenOptions& options, const std::string& liftedBy);

    /// Does `act(block)` alone, within a budget of its own. Lack of memory becomes an Error.
    template <class Act>
    auto Ask(Act act) {
        return GoOn([&act](OpenedBlock& itself) {
            itself.Renew();
            return act(itself);
        });
    }

    /// The same within what is left of the last budget, for a call that lets others ask meanwhile.
    template <class Act>
    auto GoOn(Act act) try {
        const std::lock_guard<std::mutex> alone(mutex);
        return act(block);
    } catch (const Error&) {
        throw;
    } catch (const std::exception& error) {
        if (!IsOutOfMemory(error)) throw;
        throw Error(Status::Internal, block.Path() + ": out of memory", block.Path());
    }

    /// What is kept of the file, made when first asked for. Only while asking.
    /// @{
    std::shared_ptr<ElementReader> elements;
    std::shared_ptr<ElementNames> names;
    std::shared_ptr<BodyReader> bodies;
    /// @}

  private:
    std::mutex mutex;
    std::vector<std::uint8_t> bytes;
    std::unique_ptr<ZVSmartFormat::CZVFTInStream> memory;
    Budget limits;
    OpenedBlock block;
};

}  // namespace ZVSmartModel
