#include "reference/engine/Outline.h"

#include "reference/engine/OsgMath.h"
#include "reference/engine/SceneMirror.h"
#include "reference/engine/ShaderPrograms.h"

#include <osg/BlendFunc>
#include <osgUtil/RenderStage>

namespace halvern::engine {

namespace {

const char* const maskVertex = "void main() { gl_Position = ftransform(); }";
const char* const maskFragment = "out vec4 fragment; void main() { fragment = vec4(1.0); }";

const char* const lineVertex = R"(
uniform vec4 area; // in clip coordinates
out vec2 place;
void main()
{
    vec2 corner = mix(area.xy, area.zw, gl_Vertex.xy);
    place = corner * 0.5 + 0.5;
    gl_Position = vec4(corner, 0.0, 1.0);
}
)";

const char* const lineFragment = R"(
uniform sampler2D mask;
uniform vec2 pixel;
in vec2 place;
out vec4 fragment;
float at(float x, float y)
{
    return texture(mask, place + vec2(x, y) * pixel).r;
}
void main()
{
    // Filtered between texels, so that the line is soft at its outer edge.
    float round = max(max(max(at(2.2, 0.0), at(-2.2, 0.0)), max(at(0.0, 2.2), at(0.0, -2.2))),
                      max(max(at(1.6, 1.6), at(-1.6, 1.6)), max(at(1.6, -1.6), at(-1.6, -1.6))));
    fragment = vec4(1.0, 0.58, 0.08, round * (1.0 - at(0.0, 0.0)));
}
)";

/// The rectangle of the picture round a box, with room for the line; the whole picture where the box
/// reaches behind the eye.
osg::Vec4f areaOf(const Eigen::AlignedBox3d& box, const View& view)
{
    const Eigen::Matrix4d toClip = view.projection * view.toEye.matrix();
    Eigen::AlignedBox2d area;
    for (int i = 0; i < 8; ++i) {
        const Eigen::Vector3d corner = box.corner(Eigen::AlignedBox3d::CornerType(i));
        const Eigen::Vector4d clip = toClip * corner.homogeneous();
        if (clip.w() <= 0)
            return {-1, -1, 1, 1};
        area.extend(Eigen::Vector2d(clip.head<2>() / clip.w()));
    }
    const Eigen::Vector2d margin = Eigen::Vector2d(6, 6).cwiseQuotient(view.size.cast<double>());
    const Eigen::Vector2d low = (area.min() - margin).cwiseMax(-1).cwiseMin(1);
    const Eigen::Vector2d high = (area.max() + margin).cwiseMax(-1).cwiseMin(1);
    return {float(low.x()), float(low.y()), float(high.x()), float(high.y())};
}

} // namespace

Outline::Outline() :
    maskState(new osg::StateSet),
    lineState(new osg::StateSet),
    rectangle(makeUnitSquare()),
    area(new osg::Uniform("area", osg::Vec4f())),
    pixel(new osg::Uniform("pixel", osg::Vec2f()))
{
    maskPass.stage().setClearColor(osg::Vec4f(0, 0, 0, 0));
    maskState->setAttribute(makeProgram(maskVertex, maskFragment));
    lineState->setAttribute(makeProgram(lineVertex, lineFragment));
    lineState->setAttributeAndModes(new osg::BlendFunc(osg::BlendFunc::SRC_ALPHA,
                                                       osg::BlendFunc::ONE_MINUS_SRC_ALPHA,
                                                       osg::BlendFunc::ZERO, osg::BlendFunc::ONE));
    lineState->addUniform(new osg::Uniform("mask", 0));
    lineState->addUniform(area);
    lineState->addUniform(pixel);
}

void Outline::draw(osg::State& state, RenderTarget& target, const View& view, const SceneMirror& mirror,
                   int entry)
{
    const Eigen::AlignedBox3d bounds = mirror.getBounds(entry);
    if (bounds.isEmpty())
        return;
    mask.resize(view.size);
    mask.bind(state);
    maskPass.begin(state, view.size, view.projection, maskState.get(), GL_COLOR_BUFFER_BIT);
    const SceneMirror::Entry& top = mirror.getEntries()[entry];
    for (int s = top.firstSurface; s < mirror.endSurface(entry); ++s) {
        const SceneMirror::Surface& surface = mirror.getSurfaces()[s];
        const Eigen::Affine3d toEye = view.toEye * mirror.getEntries()[surface.entry].world;
        if (!surface.bounds.isEmpty())
            maskPass.add(surface.geometry, toOsgMatrix(toEye.matrix()), 0, nullptr, nullptr);
    }
    maskPass.draw();

    target.bind(state);
    area->set(areaOf(bounds, view));
    pixel->set(osg::Vec2f(1.0f / view.size.x(), 1.0f / view.size.y()));
    lineState->setTextureAttribute(0, mask.texture());
    linePass.begin(state, view.size, view.projection, lineState.get(), 0);
    linePass.add(rectangle.get(), osg::Matrixd(), 0, nullptr, nullptr);
    linePass.draw();
}

} // namespace halvern::engine
