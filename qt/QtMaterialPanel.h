#pragma once

#include "engine/Export.h"
#include "engine/core/event/EventBase.h"

#include <QTableView>

#ifndef Q_MOC_RUN
#    include <boost/shared_ptr.hpp>
#endif

namespace halvern::scene {
class SceneManager;
} // namespace halvern::scene

namespace halvern::qt {

class QtMaterialPanelModel;

/// Shows the materials of a scene as a grid of tiles, as many side by side as there is room for.
///
/// Selecting a tile sends "MaterialSelected" with the material's ID; dragging one onto a QtView puts the
/// material on the node that it is dropped on. "SceneAttached" and "SceneUpdate" with "MaterialList" fill
/// the grid anew in the scene's next cycle; that drops the selection and sends nothing.
///
/// Every operation belongs to the GUI thread. A derived class calls the qualified setEventManager(empty)
/// first in its own destructor.
class HALVERN_QT_API QtMaterialPanel : public QTableView, public HCE::EventBase
{
    Q_OBJECT

public:
    /// An empty grid that neither sends nor hears anything.
    explicit QtMaterialPanel(QWidget* parent = nullptr);
    ~QtMaterialPanel() override;

    /// Moves the registrations of the panel and its model; when this returns, no delivery of the old manager
    /// to them runs.
    void setEventManager(boost::shared_ptr<HCE::EventManager> newEventManager) override;

    /// Shows the materials of the scene from its next cycle on. An empty pointer is ignored; the same
    /// manager takes the model as a controller once more, on purpose.
    void setSceneManager(boost::shared_ptr<scene::SceneManager> newSceneManager);

protected slots:
    /// Sends "MaterialSelected" when exactly one cell was selected; one behind the last material sends an
    /// empty ID.
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

    /// Makes each cell as large as a tile.
    void handleModelReset();

    /// Does nothing: the place from which an editor can be opened.
    void showEffectEditor(const QModelIndex& index);

protected:
    /// Lays out as many columns as tiles fit in, but at least one.
    void resizeEvent(QResizeEvent* event) override;

private:
    // Not called model, which would hide QAbstractItemView::model() from all who use the panel.
    boost::shared_ptr<QtMaterialPanelModel> materialModel;
    boost::shared_ptr<scene::SceneManager> sceneManager;
};

} // namespace halvern::qt
