#pragma once

#include <assimp/IOStream.hpp>
#include <assimp/IOSystem.hpp>
#include <assimp/ProgressHandler.hpp>
#include <memory>
#include <string>
#include <utility>

#include "model/import/ImportReport.h"
#include "model/import/ModelFile.h"

namespace ZVSmartModel {

/// The only files that assimp sees: the model, under its name, and what `open` gives.
class MeshFiles : public Assimp::IOSystem {
  public:
    MeshFiles(std::string modelName, OpenModelFile open)
        : modelName(std::move(modelName)), open(std::move(open)) {}

    bool Exists(const char* name) const override { return Opened(name) != nullptr; }
    char getOsSeparator() const override { return '/'; }
    /// Null where there is no such file, or it is to be written. The caller closes it here.
    Assimp::IOStream* Open(const char* name, const char* mode) override;
    void Close(Assimp::IOStream* stream) override;
    bool CreateDirectory(const std::string&) override { return false; }
    bool ChangeDirectory(const std::string&) override { return false; }
    bool DeleteFile(const std::string&) override { return false; }

  private:
    std::unique_ptr<Assimp::IOStream> Opened(const std::string& name) const;

    std::string modelName;
    OpenModelFile open;
};

/// Passes on how far assimp is.
class MeshProgress : public Assimp::ProgressHandler {
  public:
    explicit MeshProgress(const ImportReport& report) : report(report) {}

    bool Update(float fraction) override {
        if (fraction >= 0 && fraction <= 1) report.progress(double{fraction});
        return true;
    }

  private:
    const ImportReport& report;
};

}  // namespace ZVSmartModel
