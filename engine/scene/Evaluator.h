#pragma once

#include "engine/Export.h"

#include <boost/shared_ptr.hpp>

#include <memory>
#include <string>

namespace halvern::scene {

class Render;

/// An ordered list of render steps. May be used from any thread.
class HALVERN_SCENE_API Evaluator
{
public:
    /// No step. The name is for people.
    explicit Evaluator(std::string name);
    virtual ~Evaluator();

    Evaluator(const Evaluator&) = delete;
    Evaluator& operator=(const Evaluator&) = delete;

    /// As given to the constructor.
    virtual std::string getName() const;

    /// Appends a step; an empty pointer is ignored.
    virtual void addRender(boost::shared_ptr<Render> render);

    /// Never gets smaller.
    virtual unsigned int getRenderCount() const;

    /// Empty for an index out of range.
    virtual boost::shared_ptr<Render> getRenderAt(unsigned int index) const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace halvern::scene
