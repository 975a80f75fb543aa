#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"
#include "qt/EventListenerInterface.h"

#include <QString>
#include <QWidget>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

#include <map>
#include <memory>

class QColor;
class QComboBox;
class QGridLayout;
class QLabel;
class QScrollArea;
class QVBoxLayout;

namespace halvern::engine::fx {
class FXManager;
class FXMaterial;
class FXMaterialParameter;
} // namespace halvern::engine::fx

namespace halvern::qt {

class ErrorMessages;
class EventQueue;
class QtView;

/// Edits an effect material: its technique, and a row for each parameter whose annotations in the effect
/// file ask for an editor.
///
/// "UIWidget", in any case, chooses it: "slider" (with "UIMin", "UIMax" and "UIStep") or "color"; a parameter
/// of the type "texture" without "UIWidget" gets a preview and a button that opens a file. "UIName" is the
/// label.
///
/// Each edit sets the parameter and sends "ChangeMaterialParameter". "MaterialSelected" shows another
/// material, "MaterialParameterUpdated" refreshes an editor, "EffectReloaded" rebuilds the rows: at the next
/// paint, so that a hidden editor follows nothing until it is shown.
///
/// Every operation belongs to the GUI thread, except handleEvent. A derived class calls the qualified
/// setEventManager(empty) first in its own destructor.
class HALVERN_QT_API QtFXMaterial : public QWidget, public HCE::EventBase
{
    Q_OBJECT
    Q_INTERFACES(HCE::EventListener)

public:
    /// Shows no material, and has neither manager.
    explicit QtFXMaterial(QWidget* parent = nullptr);
    ~QtFXMaterial() override;

    /// Where materials are looked up and effects reloaded. What is shown stays.
    void setFXManager(boost::shared_ptr<engine::fx::FXManager> newFXManager);

    /// Rebuilds all rows, for the same material too. An empty pointer is ignored.
    void setFXMaterial(boost::shared_ptr<engine::fx::FXMaterial> newFXMaterial);

    /// Listens to the events of another manager and sends its own there; when this returns, no delivery of
    /// the old manager runs.
    void setEventManager(boost::shared_ptr<HCE::EventManager> newEventManager) override;

    /// Keeps the event for the next paint. Any thread.
    void handleEvent(HCE::Event event) override;

signals:
    /// An event waits for the next paint.
    void needsUpdate();

protected slots:
    /// The rows follow when the engine announces "EffectReloaded".
    void reloadEffect();

    /// Shows the effect's source text in a floating window of its own. What is typed there is written
    /// nowhere, on purpose.
    void editEffect();

    /// Sets the technique of the material and sends nothing.
    void changeTechnique(int index);

    /// Sets the parameter to so many steps of its slider. Like the next two it finds its parameter by the
    /// sender's property "FXParameterName", and shows an error where there is none.
    void setSliderParameter(int value);

    /// Asks for a colour; blocks until the dialog is closed.
    void setColorParameter();

    /// Asks for a picture file; blocks until the dialog is closed.
    void setTextureParameter();

protected:
    /// Does first what the events ask for that came since the last paint, for 50 ms at most.
    void paintEvent(QPaintEvent* event) override;

    /// Has the parameter's editor show its current value, which sends nothing.
    void updateParameterWidget(boost::shared_ptr<engine::fx::FXMaterialParameter> parameter);

    /// The view of the same window, found by its object name among the relatives of this widget, or null.
    /// Directly below the window's top level it is not searched for, on purpose.
    QtView* getHalvernQtView();

private:
    class Busy;
    class Edit;
    using ParameterPtr = boost::shared_ptr<engine::fx::FXMaterialParameter>;

    // Each returns a new widget without a parent.
    QWidget* processParameter(ParameterPtr parameter); // null where there is to be no row
    QWidget* createSliderWidget(ParameterPtr parameter);
    QWidget* createColorWidget(ParameterPtr parameter);
    QWidget* createTextureWidget(ParameterPtr parameter);
    QWidget* createUINameWidget(ParameterPtr parameter);
    QWidget* createDefaultWidget(ParameterPtr parameter); // for editors to come

    void rebuildGrid();
    void clearGrid();
    void addTechniques();
    void addParameters();
    QWidget* makeAttic();
    void retire(QWidget& widget, QWidget* attic);

    QColor readColor(engine::fx::FXMaterialParameter& parameter);
    void updateSlider(QWidget& editor, engine::fx::FXMaterialParameter& parameter);
    void updateTexture(QWidget& editor, engine::fx::FXMaterialParameter& parameter);
    void handlePendingEvents();
    void handlePending(const HCE::Event& event);
    void sendChange(std::string text);
    void showError(const QString& text);

    boost::shared_ptr<engine::fx::FXManager> fxManager;
    boost::shared_ptr<engine::fx::FXMaterial> fxMaterial;
    QLabel* titleLabel;
    QComboBox* techniqueBox = nullptr;
    QVBoxLayout* mainLayout;
    QScrollArea* scrollArea;
    QGridLayout* gridLayout;
    std::map<ParameterPtr, QWidget*> parameterWidgets;
    const std::unique_ptr<EventQueue> pendingEvents;

    ErrorMessages* errorMessages = nullptr; // made for the first one
    int busyCount = 0;                      // edits and paints under way, in which no editor may be deleted
    bool isPainting = false;
};

} // namespace halvern::qt
