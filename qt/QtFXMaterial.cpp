#include "qt/QtFXMaterial.h"

#include "engine/core/event/EventManager.h"
#include "engine/fx/FXEffect.h"
#include "engine/fx/FXManager.h"
#include "engine/fx/FXMaterial.h"
#include "qt/ErrorMessages.h"
#include "qt/EventQueue.h"
#include "qt/ParameterValues.h"
#include "qt/QtView.h"

#include <QColorDialog>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QDockWidget>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QTextEdit>
#include <QVBoxLayout>

#include <boost/algorithm/string/case_conv.hpp>

#include <locale>
#include <sstream>
#include <utility>

namespace halvern::qt {

namespace {

const char* const nameProperty = "FXParameterName";
const char* const kindProperty = "FXWidgetType";

constexpr int PaintMilliseconds = 50;

/// Rows that come into a visible container take nine times as long.
class Hidden
{
public:
    explicit Hidden(QWidget& newWidget) : widget(newWidget) { widget.hide(); }
    ~Hidden() { widget.show(); }

    Hidden(const Hidden&) = delete;
    Hidden& operator=(const Hidden&) = delete;

private:
    QWidget& widget;
};

/// A material may be called "<b>".
QLabel* makeLabel(const QString& text)
{
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QString getName(FXMaterialParameter& parameter)
{
    return QString::fromStdString(parameter.getParameterName());
}

void mark(QWidget& editor, FXMaterialParameter& parameter, const QString& kind)
{
    editor.setProperty(nameProperty, getName(parameter));
    editor.setProperty(kindProperty, kind);
}

void showColor(QPushButton& button, const QColor& color)
{
    button.setText(color.toRgb().name());
    button.setStyleSheet("background-color: " + color.name());
}

/// The pieces of an event's text, numbers in digits that every locale reads.
template <class... Pieces>
std::string join(const Pieces&... pieces)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    const char* separator = "";
    ((text << std::exchange(separator, ", ") << pieces), ...);
    return text.str();
}

/// Runs the dialog, uses it unless it was cancelled or destroyed with its parent, and deletes it.
template <class Dialog, class Use>
void execute(Dialog* newDialog, Use use)
{
    const QPointer<Dialog> dialog(newDialog);
    if (dialog->exec() == QDialog::Accepted && dialog)
        use(*dialog);
    delete dialog;
}

/// Invalid when it was cancelled.
QColor chooseColor(const QColor& color, QWidget* parent, const QString& title)
{
    auto* dialog = new QColorDialog(parent);
    if (!title.isEmpty())
        dialog->setWindowTitle(title);
    dialog->setCurrentColor(color);
    QColor chosen;
    execute(dialog, [&](const QColorDialog& used) { chosen = used.selectedColor(); });
    return chosen;
}

/// Null when it was cancelled.
QString chooseFile(QWidget* parent, const QString& title)
{
    auto* dialog = new QFileDialog(parent, title, "./Data");
    dialog->setFileMode(QFileDialog::ExistingFile);
    QString chosen;
    execute(dialog, [&](const QFileDialog& used) { chosen = used.selectedFiles().value(0); });
    return chosen;
}

} // namespace

/// While one lives, a widget of the grid may be in the middle of an event. The editor may go before it.
class QtFXMaterial::Busy
{
public:
    explicit Busy(QtFXMaterial& newEditor) : editor(&newEditor) { ++newEditor.busyCount; }
    ~Busy()
    {
        if (editor)
            --editor->busyCount;
    }

    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

protected:
    const QPointer<QtFXMaterial> editor;
};

/// What an edit is about, kept while dialogs run: then rows may be rebuilt, other materials be shown, and the
/// editor destroyed.
class QtFXMaterial::Edit : Busy
{
public:
    /// Tells the user when there is no such parameter.
    explicit Edit(QtFXMaterial& newEditor);

    /// Whether there is something to edit.
    explicit operator bool() const { return parameter != nullptr; }

    template <class... Values>
    void send(const Values&... values)
    {
        if (editor)
            editor->sendChange(join(materialID, parameterName.toStdString(), values...));
    }

    /// Null if it is gone.
    QPushButton* getButton() const { return qobject_cast<QPushButton*>(sender); }

    ParameterPtr parameter;
    QString objectName;

private:
    QPointer<QObject> sender;
    QString parameterName;
    boost::shared_ptr<engine::fx::FXMaterial> material;
    std::string materialID;
};

QtFXMaterial::Edit::Edit(QtFXMaterial& newEditor) :
    Busy(newEditor), sender(newEditor.sender()), material(newEditor.fxMaterial)
{
    if (!material)
        return;
    materialID = material->getID();
    if (sender) {
        parameterName = sender->property(nameProperty).toString();
        objectName = sender->objectName();
        parameter = material->getParameterByName(parameterName.toStdString());
    }
    if (!parameter) // the object's name, which editors lack, is meant
        newEditor.showError("No Parameter found with name: " + objectName);
}

QtFXMaterial::QtFXMaterial(QWidget* parent) :
    QWidget(parent), HCE::EventBase(nullptr), pendingEvents(std::make_unique<EventQueue>())
{
    mainLayout = new QVBoxLayout;
    gridLayout = new QGridLayout;
    gridLayout->setSizeConstraint(QLayout::SetMinimumSize);
    titleLabel = makeLabel("No Material Selected");
    titleLabel->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    auto* reloadButton = new QPushButton("Reload Effect");
    auto* editButton = new QPushButton(tr("Edit effect..."));
    auto* container = new QWidget;
    container->setLayout(gridLayout);
    scrollArea = new QScrollArea;
    scrollArea->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    scrollArea->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    scrollArea->setWidget(container);

    connect(reloadButton, SIGNAL(clicked()), this, SLOT(reloadEffect()));
    connect(editButton, SIGNAL(clicked()), this, SLOT(editEffect()));
    connect(this, SIGNAL(needsUpdate()), this, SLOT(update()));

    mainLayout->addWidget(titleLabel);
    mainLayout->addWidget(reloadButton);
    mainLayout->addWidget(editButton);
    mainLayout->addWidget(scrollArea);
    setLayout(mainLayout);
}

QtFXMaterial::~QtFXMaterial()
{
    QtFXMaterial::setEventManager(nullptr);
}

void QtFXMaterial::setFXManager(boost::shared_ptr<engine::fx::FXManager> newFXManager)
{
    fxManager = std::move(newFXManager);
}

void QtFXMaterial::setFXMaterial(boost::shared_ptr<engine::fx::FXMaterial> newFXMaterial)
{
    if (!newFXMaterial)
        return;
    fxMaterial = std::move(newFXMaterial);
    rebuildGrid();
    gridLayout->update();
    scrollArea->setWidgetResizable(true);
    scrollArea->update();
}

void QtFXMaterial::setEventManager(boost::shared_ptr<HCE::EventManager> newEventManager)
{
    HCE::EventBase::setEventManager(newEventManager);
    if (!newEventManager)
        return;
    for (const char* type : {"MaterialSelected", "MaterialParameterUpdated", "EffectReloaded"})
        newEventManager->registerEventListener(this, HCE::EventType(type));
}

void QtFXMaterial::handleEvent(HCE::Event event)
{
    pendingEvents->append(std::move(event));
    emit needsUpdate();
}

void QtFXMaterial::reloadEffect()
{
    const auto effect = fxMaterial ? fxMaterial->getFXEffect() : nullptr;
    if (effect && fxManager)
        fxManager->reloadEffect(effect);
}

void QtFXMaterial::editEffect()
{
    const auto effect = fxMaterial ? fxMaterial->getFXEffect() : nullptr;
    if (!effect)
        return;
    QWidget* ancestor = this;
    for (int i = 0; i < 3 && ancestor; ++i)
        ancestor = ancestor->parentWidget();
    auto* dock = new QDockWidget(ancestor);
    dock->setAttribute(Qt::WA_DeleteOnClose);

    auto* text = new QTextEdit(this);
    text->setTabStopDistance(30);
    text->setWordWrapMode(QTextOption::NoWrap);
    QFont font("Monospace", 10);
    font.setStyleHint(QFont::TypeWriter, QFont::PreferDefault);
    text->setCurrentFont(font);
    text->setPlainText(QString::fromStdString(effect->getEffectCode()));

    dock->setWidget(text);
    dock->setFloating(true);
    dock->setWindowOpacity(0.95);
    dock->setGeometry(100, 100, 800, 900);
    dock->show();
}

void QtFXMaterial::changeTechnique(int index)
{
    const Busy busy(*this);
    if (fxMaterial)
        fxMaterial->setTechnique(static_cast<unsigned int>(index));
}

void QtFXMaterial::setSliderParameter(int value)
{
    Edit edit(*this);
    if (!edit)
        return;
    const float number = float(value) * getSliderStep(*edit.parameter);
    edit.parameter->setParameterValue(ParameterValues{number});
    edit.send(number);
}

void QtFXMaterial::setColorParameter()
{
    Edit edit(*this);
    if (!edit)
        return;
    const QColor color = chooseColor(readColor(*edit.parameter), this, edit.objectName);
    if (!color.isValid()) // as when this editor is gone, and the dialog with it
        return;
    if (QPushButton* button = edit.getButton())
        showColor(*button, color);
    // Sent before it is set, on purpose; a slider does it the other way round.
    const std::vector<float> components = toComponents(color);
    edit.send(components[0], components[1], components[2], components[3]);
    edit.parameter->setParameterValue(ParameterValues(components.begin(), components.end()));
}

void QtFXMaterial::setTextureParameter()
{
    Edit edit(*this);
    if (!edit)
        return;
    if (!getValue<std::string>(edit.parameter->getParameterValues(), 0))
        showError("Error reading fileName from parameter: " + getName(*edit.parameter));
    const QString chosen = chooseFile(this, tr("Open Texture"));
    if (chosen.isNull()) // as when this editor is gone, and the dialog with it
        return;
    const std::string fileName = chosen.toStdString();
    edit.send(fileName);
    edit.parameter->setParameterValue(fileName);
}

void QtFXMaterial::paintEvent(QPaintEvent* event)
{
    handlePendingEvents();
    QWidget::paintEvent(event);
}

void QtFXMaterial::updateParameterWidget(ParameterPtr parameter)
{
    const auto found = parameterWidgets.find(parameter);
    if (found == parameterWidgets.end() || !found->second)
        return;
    QWidget& editor = *found->second;
    const QSignalBlocker blocker(editor);
    const QString kind = editor.property(kindProperty).toString();
    if (kind == tr("ColorWidget")) {
        if (auto* button = qobject_cast<QPushButton*>(&editor))
            showColor(*button, readColor(*parameter));
    } else if (kind == tr("SliderWidget")) {
        updateSlider(editor, *parameter);
    } else if (kind == tr("TextureWidget")) {
        updateTexture(editor, *parameter);
    }
}

QtView* QtFXMaterial::getHalvernQtView()
{
    for (QWidget* ancestor = parentWidget(); ancestor && ancestor->parentWidget();
         ancestor = ancestor->parentWidget())
        if (auto* view = ancestor->findChild<QtView*>("Halvern_Rendering_QtView"))
            return view;
    return nullptr;
}

QWidget* QtFXMaterial::processParameter(ParameterPtr parameter)
{
    std::string kind = getAnnotation(*parameter, "UIWidget", std::string());
    boost::to_lower(kind, std::locale::classic());
    QWidget* editor = nullptr;
    if (kind.empty() && parameter->getParameterType() == "texture")
        editor = createTextureWidget(parameter);
    else if (kind == "slider")
        editor = createSliderWidget(parameter);
    else if (kind == "color")
        editor = createColorWidget(parameter);
    parameterWidgets[parameter] = editor;
    return editor;
}

QWidget* QtFXMaterial::createSliderWidget(ParameterPtr parameter)
{
    const float minimum = getAnnotation(*parameter, "UIMin", 0.0f);
    const float maximum = getAnnotation(*parameter, "UIMax", 1.0f);
    const float step = getSliderStep(*parameter);

    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(toSliderNumber(minimum, step), toSliderNumber(maximum, step));
    slider->setTickInterval(1);
    mark(*slider, *parameter, tr("SliderWidget"));
    const ParameterValues values = parameter->getParameterValues();
    if (const auto* value = getValue<float>(values, 0))
        slider->setValue(toSliderNumber(*value, step));
    connect(slider, SIGNAL(valueChanged(int)), this, SLOT(setSliderParameter(int)));
    return slider;
}

QWidget* QtFXMaterial::createColorWidget(ParameterPtr parameter)
{
    const QColor color = readColor(*parameter);
    auto* button = new QPushButton;
    mark(*button, *parameter, tr("ColorWidget"));
    showColor(*button, color);
    connect(button, SIGNAL(clicked()), this, SLOT(setColorParameter()));
    return button;
}

QWidget* QtFXMaterial::createTextureWidget(ParameterPtr parameter)
{
    if (!getValue<std::string>(parameter->getParameterValues(), 0))
        showError("Error reading fileName from parameter: " + getName(*parameter));

    auto* editor = new QWidget;
    mark(*editor, *parameter, tr("TextureWidget"));
    auto* picture = new QLabel; // empty until the first update, on purpose
    picture->setObjectName(tr("ImageLabel"));
    auto* button = new QPushButton(tr("..."));
    button->setProperty(nameProperty, getName(*parameter));
    connect(button, SIGNAL(clicked()), this, SLOT(setTextureParameter()));
    auto* layout = new QHBoxLayout(editor);
    layout->addWidget(picture);
    layout->addWidget(button);
    return editor;
}

QWidget* QtFXMaterial::createUINameWidget(ParameterPtr parameter)
{
    return makeLabel(
        QString::fromStdString(getAnnotation(*parameter, "UIName", parameter->getParameterName())));
}

QWidget* QtFXMaterial::createDefaultWidget(ParameterPtr /*parameter*/)
{
    return new QWidget;
}

void QtFXMaterial::rebuildGrid()
{
    const Hidden hidden(*scrollArea->widget());
    clearGrid();
    addTechniques();
    titleLabel->setText(QString::fromStdString(fxMaterial->getID()));
    addParameters();
    gridLayout->setRowStretch(gridLayout->count(), 1); // items, not rows: well below them
}

void QtFXMaterial::clearGrid()
{
    techniqueBox = nullptr;
    parameterWidgets.clear();
    gridLayout->setRowStretch(gridLayout->count(), 0); // where the last build left it
    // All are taken before the first one goes: the layout looks for each that goes among those it has.
    std::vector<QWidget*> widgets;
    while (const std::unique_ptr<QLayoutItem> item{gridLayout->takeAt(0)})
        widgets.push_back(item->widget());
    QWidget* attic = isPainting ? makeAttic() : nullptr;
    for (QWidget* widget : widgets)
        retire(*widget, attic);
}

/// A place for widgets that leave in the middle of a paint, for as long as it takes: Qt may have them in its
/// list of what is to be painted, and then looks for the way from them to their window.
QWidget* QtFXMaterial::makeAttic()
{
    auto* attic = new QWidget(this);
    attic->deleteLater();
    return attic;
}

/// Deletes a widget of the grid; later, if it may be in the middle of an event of its own.
void QtFXMaterial::retire(QWidget& widget, QWidget* attic)
{
    if (busyCount == 0) {
        delete &widget;
        return;
    }
    widget.hide();
    widget.setParent(attic);
    widget.disconnect(this);
    for (QWidget* child : widget.findChildren<QWidget*>())
        child->disconnect(this);
    widget.deleteLater();
}

void QtFXMaterial::addTechniques()
{
    techniqueBox = new QComboBox(this);
    const auto effect = fxMaterial->getFXEffect();
    const unsigned int count = effect ? effect->getTechniqueCount() : 0;
    for (unsigned int i = 0; i < count; ++i)
        techniqueBox->addItem(QString::fromStdString(effect->getTechniqueNameAt(i)));
    connect(techniqueBox, SIGNAL(activated(int)), this, SLOT(changeTechnique(int)));
    techniqueBox->setCurrentIndex(int(fxMaterial->getTechnique()));
    gridLayout->addWidget(new QLabel(tr("Technique")), 0, 0);
    gridLayout->addWidget(techniqueBox, 0, 1);
}

void QtFXMaterial::addParameters()
{
    const int count = fxMaterial->getParameterCount();
    for (int i = 0; i < count; ++i) {
        const ParameterPtr parameter = fxMaterial->getParameterAt(static_cast<unsigned int>(i));
        QWidget* editor = parameter ? processParameter(parameter) : nullptr;
        if (!editor)
            continue; // its grid row stays empty, on purpose
        gridLayout->addWidget(createUINameWidget(parameter), i + 1, 0);
        gridLayout->addWidget(editor, i + 1, 1);
    }
}

QColor QtFXMaterial::readColor(FXMaterialParameter& parameter)
{
    const ReadColor read = qt::readColor(parameter.getParameterValues());
    if (!read.isComplete)
        showError("Error reading color from parameter: " + getName(parameter));
    return read.color;
}

void QtFXMaterial::updateSlider(QWidget& editor, FXMaterialParameter& parameter)
{
    auto* slider = qobject_cast<QSlider*>(&editor);
    const ParameterValues values = parameter.getParameterValues();
    const auto* value = getValue<float>(values, 0);
    if (!slider || !value)
        return;
    // The number of steps is cut off, so that the echo of an edit could come out one step lower.
    const float step = getSliderStep(parameter);
    if (float(slider->value()) * step != *value)
        slider->setValue(toSliderNumber(*value, step));
}

void QtFXMaterial::updateTexture(QWidget& editor, FXMaterialParameter& parameter)
{
    const ParameterValues values = parameter.getParameterValues();
    const auto* fileName = getValue<std::string>(values, 0);
    if (!fileName)
        showError("Error reading texture filename from parameter: " + getName(parameter));
    auto* label = editor.findChild<QLabel*>(tr("ImageLabel"));
    if (!label)
        return;
    const QPixmap picture(fileName ? QString::fromStdString(*fileName) : QString());
    label->setPixmap(
        picture.isNull() ? picture : picture.scaled(40, 30, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

void QtFXMaterial::handlePendingEvents()
{
    const Busy busy(*this);
    const QScopedValueRollback<bool> painting(isPainting, true);
    // Those that come in meanwhile have asked for another paint, should the time run out.
    const QDeadlineTimer deadline(PaintMilliseconds);
    for (auto events = pendingEvents->takeAll(); !events.empty(); events = pendingEvents->takeAll()) {
        for (const HCE::Event& event : events)
            handlePending(event);
        if (deadline.hasExpired())
            break;
    }
}

void QtFXMaterial::handlePending(const HCE::Event& event)
try {
    const std::string type = event.getEventType().getName();
    const HCE::EventData data = event.getEventData();
    if (type == "MaterialSelected") {
        if (fxManager)
            setFXMaterial(fxManager->getFXMaterial(data.getArg(1)));
        return;
    }
    if (!fxMaterial)
        return;
    if (type == "MaterialParameterUpdated") {
        if (data.getArg(1) == fxMaterial->getID())
            updateParameterWidget(fxMaterial->getParameterByName(data.getArg(2)));
    } else if (type == "EffectReloaded") {
        const auto effect = fxMaterial->getFXEffect();
        if (effect && effect->getID() == data.getArg(1))
            setFXMaterial(fxMaterial);
    }
} catch (...) {
    // What comes after it is shown all the same.
}

void QtFXMaterial::sendChange(std::string text)
{
    triggerEvent(HCE::Event(HCE::EventType("ChangeMaterialParameter"), HCE::EventData(std::move(text)), ""));
}

void QtFXMaterial::showError(const QString& text)
{
    if (isPainting) {
        // A window must not come up in the middle of a paint.
        QMetaObject::invokeMethod(
            this, [this, text] { showError(text); }, Qt::QueuedConnection);
        return;
    }
    if (!errorMessages)
        errorMessages = new ErrorMessages(this);
    errorMessages->add(text);
}

} // namespace halvern::qt
