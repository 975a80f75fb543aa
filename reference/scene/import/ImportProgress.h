#pragma once

#include "reference/scene/Importer.h"

#include <assimp/ProgressHandler.hpp>

#include <algorithm>

namespace halvern::scene {

/// Hands the progress of an import on and ends the import when it was cancelled.
class ImportProgress : public Assimp::ProgressHandler
{
public:
    /// The parts of an import, by the share at which they end.
    static constexpr float FileRead = 0.5f;
    static constexpr float Processed = 0.7f;
    static constexpr float Materials = 0.9f;

    ImportProgress(std::string newFileName, std::function<bool(float)> newFunction) :
        fileName(std::move(newFileName)), function(std::move(newFunction))
    {}

    /// Throws ImportCancelled. Assimp catches it and gives up: look at isCancelled() then.
    void advance(float newShare)
    {
        share = std::clamp(newShare, share, 1.0f);
        cancelled = cancelled || (function && !function(share));
        throwIfCancelled();
    }

    void advanceWithin(float begin, float end, unsigned done, unsigned all)
    {
        advance(begin + (end - begin) * static_cast<float>(done) / static_cast<float>(all));
    }

    void throwIfCancelled() const
    {
        if (cancelled)
            throw ImportCancelled(fileName + ": cancelled");
    }

    bool Update(float) override
    {
        advance(share);
        return true;
    }

    void UpdateFileRead(int done, int all) override
    {
        advance(all > 0 ? FileRead * static_cast<float>(done) / static_cast<float>(all) : share);
    }

    void UpdatePostProcess(int done, int all) override
    {
        advanceWithin(FileRead, Processed, static_cast<unsigned>(done), static_cast<unsigned>(all));
    }

private:
    const std::string fileName;
    const std::function<bool(float)> function;
    float share = 0;
    bool cancelled = false;
};

} // namespace halvern::scene
