#include "reference/engine/fx/StandardParameter.h"

#include "reference/scene/StandardMaterial.h"

#include <mutex>

namespace halvern::engine::fx {

using scene::StandardMaterial;

namespace {

StandardMaterial readValues(const scene::Material& material)
{
    const auto values = getStandardMaterial(material);
    return values ? *values : StandardMaterial();
}

/// Two that change one material at a time must not undo each other's work.
template <class Change>
void changeValues(scene::Material& material, Change change)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    auto values = std::make_shared<StandardMaterial>(readValues(material));
    change(*values);
    setStandardMaterial(material, std::move(values));
}

ParameterValue toValue(float number)
{
    return {{number}, {}, {}};
}

ParameterValue toValue(bool on)
{
    return {{on ? 1.0f : 0.0f}, {}, {}};
}

template <int size>
ParameterValue toValue(const Eigen::Matrix<float, size, 1>& vector)
{
    return {{vector.data(), vector.data() + size}, {}, {}};
}

ParameterValue toValue(const std::shared_ptr<const scene::Image>& picture)
{
    return {{}, picture ? picture->name : "", picture};
}

void assign(float& number, const ParameterValue& value)
{
    number = value.numbers[0];
}

void assign(bool& on, const ParameterValue& value)
{
    on = value.numbers[0] != 0;
}

template <int size>
void assign(Eigen::Matrix<float, size, 1>& vector, const ParameterValue& value)
{
    vector = Eigen::Map<const Eigen::Matrix<float, size, 1>>(value.numbers.data());
}

void assign(std::shared_ptr<const scene::Image>& picture, const ParameterValue& value)
{
    picture = value.picture;
}

template <auto member>
ParameterValue get(const StandardMaterial& values)
{
    return toValue(values.*member);
}

template <auto member>
void set(StandardMaterial& values, const ParameterValue& value)
{
    assign(values.*member, value);
}

} // namespace

struct StandardParameter::Access
{
    const char* name;
    ParameterType type;
    ParameterValue (*get)(const StandardMaterial&);
    void (*set)(StandardMaterial&, const ParameterValue&);

    template <auto member>
    static Access to(const char* name, ParameterType type)
    {
        return {name, type, fx::get<member>, fx::set<member>};
    }
};

const StandardParameter::Access* StandardParameter::findAccess(const ParameterSyntax& syntax)
{
    using Values = StandardMaterial;
    using Type = ParameterType;
    static const Access all[] = {Access::to<&Values::baseColor>("baseColor", Type::Float4),
                                 Access::to<&Values::metalness>("metalness", Type::Float),
                                 Access::to<&Values::roughness>("roughness", Type::Float),
                                 Access::to<&Values::emissive>("emissive", Type::Float3),
                                 Access::to<&Values::normalScale>("normalScale", Type::Float),
                                 Access::to<&Values::alphaCutoff>("alphaCutoff", Type::Float),
                                 Access::to<&Values::unlit>("unlit", Type::Bool),
                                 Access::to<&Values::baseColorMap>("baseColorMap", Type::Texture),
                                 Access::to<&Values::metalRoughMap>("metalRoughMap", Type::Texture),
                                 Access::to<&Values::normalMap>("normalMap", Type::Texture),
                                 Access::to<&Values::emissiveMap>("emissiveMap", Type::Texture),
                                 Access::to<&Values::occlusionMap>("occlusionMap", Type::Texture)};
    for (const Access& access : all)
        if (syntax.name == access.name && syntax.type == access.type)
            return &access;
    return nullptr;
}

StandardParameter::StandardParameter(boost::shared_ptr<scene::Material> newMaterial,
                                     std::shared_ptr<const EffectSyntax> newEffect,
                                     const ParameterSyntax& newSyntax) :
    EffectParameter(std::move(newMaterial), std::move(newEffect), newSyntax), access(*findAccess(newSyntax))
{}

bool StandardParameter::exists(const ParameterSyntax& syntax)
{
    return findAccess(syntax) != nullptr;
}

std::vector<ParameterValue> StandardParameter::getAll(const StandardMaterial& values,
                                                      const EffectSyntax& effect)
{
    const bool isPacked = values.occlusionMap && values.occlusionMap == values.metalRoughMap;
    std::vector<ParameterValue> all;
    for (const ParameterSyntax& each : effect.parameters) {
        const Access* access = findAccess(each);
        all.push_back(access ? access->get(values) : getDefaultValue(effect, each));
        // One picture is looked up once.
        if (isPacked && each.name == "packedOcclusion")
            all.back().numbers.assign(1, 1.0f);
        if (isPacked && each.name == "occlusionMap")
            all.back().picture.reset();
    }
    return all;
}

ParameterValue StandardParameter::getValue() const
{
    return access.get(readValues(*material));
}

void StandardParameter::setValue(ParameterValue newValue)
{
    changeValues(*material, [&](StandardMaterial& values) { access.set(values, newValue); });
}

unsigned int getStandardTechnique(const scene::Material& material)
{
    return unsigned(readValues(material).alpha);
}

void setStandardTechnique(scene::Material& material, unsigned int index)
{
    if (index > unsigned(StandardMaterial::Alpha::Blend))
        return;
    changeValues(material,
                 [index](StandardMaterial& values) { values.alpha = StandardMaterial::Alpha(index); });
}

} // namespace halvern::engine::fx
