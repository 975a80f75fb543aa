#pragma once

#include "engine/fx/FXAnnotation.h"
#include "engine/fx/FXEffect.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXMaterial.h"
#include "engine/fx/FXMaterialParameter.h"

#include <QString>
#include <QStringList>

#include <boost/any.hpp>
#include <boost/make_shared.hpp>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace halvern::test {

using AnyValues = std::vector<boost::any>;
using Annotations = std::map<std::string, boost::any>;

inline boost::any text(const char* characters)
{
    return std::string(characters);
}

class FakeAnnotation : public engine::fx::FXAnnotation
{
public:
    explicit FakeAnnotation(boost::any value) : value(std::move(value)) {}
    boost::any getFirstValue() override { return value; }

private:
    const boost::any value;
};

/// Holds any values, and notes in a log what it is set to.
class FakeParameter : public engine::fx::FXMaterialParameter
{
public:
    FakeParameter(QStringList& log, std::string name, AnyValues values, Annotations annotations = {},
                  std::string type = "float") :
        values(std::move(values)),
        annotations(std::move(annotations)),
        log(log),
        name(std::move(name)),
        type(std::move(type))
    {}

    std::string getParameterName() override { return name; }
    std::string getParameterType() override { return type; }
    std::vector<boost::any> getParameterValues() override { return values; }

    bool setParameterValue(std::vector<boost::any> newValues) override
    {
        QString line = "set " + QString::fromStdString(name);
        for (const boost::any& value : newValues)
            line += ' ' + QString::number(double(boost::any_cast<float>(value)));
        values = std::move(newValues);
        return note(line);
    }
    bool setParameterValue(std::string value) override
    {
        values = {value};
        return note("set " + QString::fromStdString(name) + " to text " + QString::fromStdString(value));
    }
    boost::shared_ptr<engine::fx::FXAnnotation> getAnnotationByName(std::string annotation) override
    {
        const auto found = annotations.find(annotation);
        return found == annotations.end() ? nullptr : boost::make_shared<FakeAnnotation>(found->second);
    }

    AnyValues values;
    Annotations annotations;
    bool answer = true;
    std::function<void()> onSet; // runs inside each

private:
    bool note(const QString& line)
    {
        log += line;
        if (onSet)
            onSet();
        return answer;
    }

    QStringList& log;
    const std::string name;
    const std::string type;
};

class FakeEffect : public engine::fx::FXEffect
{
public:
    explicit FakeEffect(std::string id, std::vector<std::string> techniques = {}, std::string code = "") :
        techniques(std::move(techniques)), code(std::move(code)), id(std::move(id))
    {}

    const std::string& getID() override { return id; }
    const std::string& getScriptClass() override { return scriptClass; }
    const std::string& getEffectCode() override { return code; }
    unsigned int getTechniqueCount() override { return unsigned(techniques.size()); }
    std::string getTechniqueNameAt(unsigned int index) override { return techniques.at(index); }

    std::vector<std::string> techniques;
    std::string code;

private:
    const std::string id;
    const std::string scriptClass = "object";
};

/// Notes in a log which technique is chosen.
class FakeMaterial : public engine::fx::FXMaterial
{
public:
    using Parameters = std::vector<boost::shared_ptr<FakeParameter>>;

    FakeMaterial(QStringList& log, std::string id, boost::shared_ptr<FakeEffect> effect = nullptr,
                 Parameters parameters = {}) :
        effect(std::move(effect)), parameters(std::move(parameters)), log(log), id(std::move(id))
    {}

    std::string getID() override { return id; }
    boost::shared_ptr<engine::fx::FXEffect> getFXEffect() override { return effect; }
    int getParameterCount() override { return int(parameters.size()); }
    boost::shared_ptr<engine::fx::FXMaterialParameter> getParameterAt(unsigned int index) override
    {
        return parameters.at(index);
    }
    boost::shared_ptr<engine::fx::FXMaterialParameter> getParameterByName(std::string name) override
    {
        for (const auto& parameter : parameters)
            if (parameter && parameter->getParameterName() == name)
                return parameter;
        return {};
    }
    unsigned int getTechnique() override
    {
        if (onTechnique)
            onTechnique();
        return technique;
    }
    void setTechnique(unsigned int index) override
    {
        technique = index;
        log += "technique " + QString::number(index);
        if (onSet)
            onSet();
    }

    boost::shared_ptr<FakeEffect> effect;
    Parameters parameters;
    unsigned int technique = 0;
    std::function<void()> onTechnique; // runs each time that it is asked for
    std::function<void()> onSet;       // runs each time that it is chosen

private:
    QStringList& log;
    const std::string id;
};

/// Knows the materials that it is given, and notes in a log what is asked of it.
class FakeFXManager : public engine::fx::FXManager
{
public:
    explicit FakeFXManager(QStringList& log) : FXManager(nullptr, nullptr), log(log) {}

    boost::shared_ptr<engine::fx::FXMaterial> getFXMaterial(std::string id) override
    {
        log += "find " + QString::fromStdString(id);
        const auto found = materials.find(id);
        return found == materials.end() ? nullptr : found->second;
    }
    bool reloadEffect(boost::shared_ptr<engine::fx::FXEffect> effect) override
    {
        log += "reload " + QString::fromStdString(effect->getID());
        return true;
    }

    std::map<std::string, boost::shared_ptr<engine::fx::FXMaterial>> materials;

private:
    QStringList& log;
};

} // namespace halvern::test
