#include "StudioPage.h"

#include <MarlixLibQt/QtUtils.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace Studio {

namespace {

QGroupBox* buttonsBox()
{
    auto* box = new QGroupBox(QObject::tr("Buttons"));
    auto* layout = new QGridLayout(box);
    //: A button that starts a render
    layout->addWidget(new QPushButton(QObject::tr("Render")), 0, 0);
    auto* disabled = new QPushButton(QObject::tr("Disabled"));
    disabled->setEnabled(false);
    layout->addWidget(disabled, 0, 1);
    auto* tool = new QToolButton;
    tool->setText(QObject::tr("Tool"));
    layout->addWidget(tool, 0, 2);
    auto* flat = new QToolButton;
    flat->setText(QObject::tr("Flat tool"));
    flat->setProperty("Zorva.FlatButton", true);
    layout->addWidget(flat, 0, 3);
    auto* check = new QCheckBox(QObject::tr("Cast shadows"));
    check->setChecked(true);
    layout->addWidget(check, 1, 0);
    layout->addWidget(new QCheckBox(QObject::tr("Visible to camera")), 1, 1);
    auto* radio = new QRadioButton(QObject::tr("Path tracing"));
    radio->setChecked(true);
    layout->addWidget(radio, 2, 0);
    layout->addWidget(new QRadioButton(QObject::tr("Rasterized")), 2, 1);
    return box;
}

QGroupBox* valuesBox()
{
    auto* box = new QGroupBox(QObject::tr("Values"));
    auto* layout = new QFormLayout(box);
    auto* combo = new QComboBox;
    combo->addItems({ QObject::tr("Lambert"), QObject::tr("GGX"), QObject::tr("Sheen") });
    layout->addRow(QObject::tr("Model"), combo);
    auto* spin = new QDoubleSpinBox;
    spin->setSuffix(QStringLiteral(" m"));
    spin->setValue(1.25);
    layout->addRow(QObject::tr("Distance"), spin);
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setValue(35);
    layout->addRow(QObject::tr("Roughness"), slider);
    auto* edit = new QLineEdit(QObject::tr("Key light"));
    edit->setToolTip(QObject::tr("The name shown in the scene lister"));
    layout->addRow(QObject::tr("Name"), edit);
    auto* progress = new QProgressBar;
    progress->setValue(62);
    layout->addRow(QObject::tr("Progress"), progress);
    return box;
}

QWidget* sceneTree()
{
    auto* tree = new QTreeWidget;
    tree->setAccessibleName(QObject::tr("Scene tree"));
    tree->setHeaderLabels({ QObject::tr("Entity"), QObject::tr("Class") });
    auto* scene = new QTreeWidgetItem(tree, { QObject::tr("Scene"), QObject::tr("Scene") });
    auto* lights = new QTreeWidgetItem(scene, { QObject::tr("Lights"), QObject::tr("Group") });
    new QTreeWidgetItem(lights, { QObject::tr("Key light"), QObject::tr("Light") });
    new QTreeWidgetItem(lights, { QObject::tr("Rim light"), QObject::tr("Light") });
    auto* meshes = new QTreeWidgetItem(scene, { QObject::tr("Meshes"), QObject::tr("Group") });
    auto* teapot = new QTreeWidgetItem(meshes, { QObject::tr("Teapot"), QObject::tr("Mesh") });
    new QTreeWidgetItem(meshes, { QObject::tr("Floor"), QObject::tr("Mesh") });
    tree->expandAll();
    tree->header()->resizeSection(0, 220);
    tree->setCurrentItem(teapot);
    return tree;
}

// A rich tooltip as the application shows it: formatted by formatToolTip and sized by the style (wrapped at the
// style's maximum width), rendered into the page so the screenshot shows it.
QGroupBox* toolTipBox(QWidget* page)
{
    auto* box = new QGroupBox(QObject::tr("Tooltips"));
    auto* layout = new QVBoxLayout(box);
    const QString shortTip = Marlix::formatToolTip(QObject::tr("Exposure"), QObject::tr("Stops of light."));
    const QString longTip = Marlix::formatToolTip(QObject::tr("Indirect clamp"),
        QObject::tr("Limits the brightness of indirect samples so that rare bright paths do not show as fireflies. "
                    "Lower values trade energy for a cleaner image.\n<p><i>0 disables the clamp.</i></p>"),
        QStringLiteral("Ctrl+I"));
    for (const QString& tip : { shortTip, longTip }) {
        auto* label = new QLabel;
        label->setPixmap(Marlix::renderToolTipToPixmap(tip, *page));
        layout->addWidget(label);
    }
    return box;
}

} // namespace

QWidget* createControlsPage(QWidget* parent)
{
    auto* page = new QWidget(parent);
    auto* layout = new QGridLayout(page);
    layout->addWidget(buttonsBox(), 0, 0);
    layout->addWidget(valuesBox(), 1, 0);
    auto* tabs = new QTabWidget;
    tabs->addTab(sceneTree(), QObject::tr("Scene"));
    tabs->addTab(new QWidget, QObject::tr("Render settings"));
    layout->addWidget(tabs, 0, 1, 2, 1);
    layout->addWidget(toolTipBox(page), 2, 0, 1, 2);
    layout->setColumnStretch(1, 1);
    layout->setRowStretch(3, 1);
    return page;
}

} // namespace Studio
