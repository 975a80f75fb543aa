#pragma once

#include <boost/shared_ptr.hpp>

#include <functional>
#include <set>
#include <string>

struct aiAnimation;

namespace halvern::scene {

class Animation;

/// `nodeID` gives the ID of the first node of a name, or an empty text. An animation of bones or of morph
/// targets is not valid: it can be played but not edited.
boost::shared_ptr<Animation> readAnimation(const aiAnimation& source, const std::string& id,
                                           const std::function<std::string(const std::string&)>& nodeID,
                                           const std::set<std::string>& bones);

} // namespace halvern::scene
