#include <MarlixLib/base/Exception.h>
#include <MarlixLibQt/widgets/graph/ConnectionItem.h>
#include <MarlixLibQt/widgets/graph/GraphView.h>
#include <MarlixLibQt/widgets/graph/NodeItem.h>
#include <MarlixLibQt/widgets/thumbnails/ThumbnailManager.h>

#include <QFontMetricsF>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <algorithm>

namespace Marlix::Widgets {

namespace {

// Above this many pixels per unit text is readable; above the second one a bar stands for it, below nothing.
constexpr double TEXT_LEVEL_OF_DETAIL = 0.4;
constexpr double LABEL_LEVEL_OF_DETAIL = 0.15;

constexpr double SEPARATOR_LEFT = 15.0;
constexpr double SEPARATOR_RIGHT = 205.0;
constexpr double TEXT_LEFT = 10.0;
constexpr double LABEL_LEFT = 20.0;
constexpr double LABEL_RIGHT_MARGIN = 10.0;
constexpr double SLOT_INSET = 10.0;

QPen makePen(const QColor& color)
{
    QPen pen(color, 2.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    return pen;
}

// Pens, brushes and fonts are made once: painting thousands of nodes must not allocate.
struct Palette
{
    QColor wire { 255, 255, 0 };
    QColor accepting { 40, 255, 40 };
    QColor refusing { 255, 40, 40 };
    QColor fill { 64, 64, 64 };
    QColor separator { 80, 80, 80 };
    QColor outline { 10, 10, 10 };
    QColor selected { 96, 128, 192 };
    QColor connectedLabel { 255, 255, 255 };
    QColor freeLabel { 90, 90, 90 };
    QColor title { 236, 236, 236 };
    QColor className { 150, 150, 150 };

    QPen wirePen = makePen(wire);
    QPen acceptingPen = makePen(accepting);
    QPen refusingPen = makePen(refusing);
    QPen separatorPen = makePen(separator);
    QPen outlinePen = makePen(outline);
    QPen selectedPen = makePen(selected);
    QPen connectedLabelPen = makePen(connectedLabel);
    QPen freeLabelPen = makePen(freeLabel);
    QPen titlePen { title };
    QPen classNamePen { className };
    QBrush wireBrush { wire };
    QBrush acceptingBrush { accepting };
    QBrush refusingBrush { refusing };
    QBrush fillBrush { fill };
    QFont titleFont;
    QFont classFont;
    QFont labelFont;

    Palette()
    {
        titleFont.setPixelSize(13);
        titleFont.setBold(true);
        classFont.setPixelSize(10);
        labelFont.setPixelSize(11);
    }

    static const Palette& get()
    {
        static const Palette palette;
        return palette;
    }
};

QStaticText makeStaticText(const QString& text, const QFont& font)
{
    QStaticText result(text);
    result.setTextFormat(Qt::PlainText);
    result.setPerformanceHint(QStaticText::AggressiveCaching);
    result.prepare(QTransform(), font);
    return result;
}

} // namespace

void NodeItem::Slot::paint(QPainter& painter, int state, double)
{
    const Palette& palette = Palette::get();
    switch (state) {
    case NORMAL:
        painter.setPen(palette.wirePen);
        painter.setBrush(isConnected() ? palette.wireBrush : palette.fillBrush);
        break;
    case ACCEPTING:
        painter.setPen(palette.acceptingPen);
        painter.setBrush(palette.acceptingBrush);
        break;
    case REFUSING:
        painter.setPen(palette.refusingPen);
        painter.setBrush(palette.refusingBrush);
        break;
    default:
        // Only the item computes states; an unknown one is a broken invariant, but paint must not throw.
        Q_ASSERT_X(false, "widgets/Nodes", "unknown slot state");
        return;
    }
    painter.drawEllipse(rect);
}

NodeItem::InputSlot::InputSlot(
    const QRectF& rect, String property, QString label, const QRectF& labelRect, bool connected)
    : Slot(rect)
    , property(std::move(property))
    , label(std::move(label))
    , labelRect(labelRect)
    , connected(connected)
{
}

void NodeItem::InputSlot::paint(QPainter& painter, int state, double levelOfDetail)
{
    Slot::paint(painter, state, levelOfDetail);
    if (levelOfDetail <= LABEL_LEVEL_OF_DETAIL)
        return;
    const Palette& palette = Palette::get();
    if (!cacheValid) {
        const QFontMetricsF metrics(palette.labelFont);
        const QString text = metrics.elidedText(label, Qt::ElideRight, labelRect.width());
        elided = makeStaticText(text, palette.labelFont);
        const QSizeF size = elided.size();
        elidedRect
            = QRectF(labelRect.left(), labelRect.center().y() - size.height() * 0.5, size.width(), size.height());
        barRect = elidedRect;
        barRect.setHeight(size.height() * 0.25);
        barRect.moveTop(labelRect.center().y() - barRect.height() * 0.5);
        cacheValid = true;
    }
    const QPen& pen = connected ? palette.connectedLabelPen : palette.freeLabelPen;
    if (levelOfDetail > TEXT_LEVEL_OF_DETAIL) {
        painter.setPen(pen);
        painter.setFont(palette.labelFont);
        painter.drawStaticText(elidedRect.topLeft(), elided);
    } else {
        painter.fillRect(barRect, pen.color());
    }
}

NodeItem::NodeItem(const EntityHolder<Node>& node, QPointer<GraphView> view)
    : node(node)
    , view(std::move(view))
    , outputSlot(
          QRectF(WIDTH - SLOT_INSET - SLOT_RADIUS, TITLE_HEIGHT * 0.5 - SLOT_RADIUS, 2 * SLOT_RADIUS, 2 * SLOT_RADIUS))
{
    if (!node)
        Detail::throwStopException("widgets/Nodes", __LINE__);
    setFlags(ItemIsSelectable | ItemIsMovable | ItemSendsGeometryChanges);
    // The item reads the node on the GUI thread, after the change that caused the call is complete.
    node->setEntityObserver([item = QPointer<NodeItem>(this)] {
        if (item)
            item->synchronize();
    });
    synchronize();
}

NodeItem::~NodeItem()
{
    node->setEntityObserver({});
}

void NodeItem::synchronize()
{
    const QString nextTitle = node->getTitle();
    const EntityHolder<Entity> entity = node->getEntity();
    const QString nextClass = entity ? QString::fromStdString(entity->getClassInfo().getName()) : QString();
    if (nextTitle != title || nextClass != className) {
        title = nextTitle;
        className = nextClass;
        titleCacheValid = false;
        update();
    }
    const QPointF position = node->getPosition();
    if (position != pos())
        setPos(position);
    synchronizeSlots();
    Q_EMIT synchronized(*this);
}

void NodeItem::synchronizeSlots()
{
    const ThumbnailClient* thumbnails = view ? view->getThumbnailClient() : nullptr;
    const EntityHolder<Entity> entity = node->getEntity();
    const bool thumbnail = thumbnails && entity && thumbnails->canGenerateThumbnailFor(entity);
    const double header = TITLE_HEIGHT + (thumbnail ? THUMBNAIL_SIZE + THUMBNAIL_MARGIN : 0.0);

    const Stack<Node::InputDescriptor> inputs = node->getAvailableInputs();
    bool same = header == headerHeight && inputs.size() == inputSlots.size();
    for (std::size_t i = 0; same && i < inputs.size(); ++i) {
        const auto& [property, label, connected] = inputs[i];
        same = inputSlots[i].getProperty() == property && inputSlots[i].getLabel() == label
            && inputSlots[i].isConnected() == connected;
    }
    if (same)
        return;

    prepareGeometryChange();
    hasThumbnail = thumbnail;
    headerHeight = header;
    inputSlots.clear();
    inputSlots.reserve(inputs.size());
    double top = headerHeight + ROWS_MARGIN * 0.5;
    for (const auto& [property, label, connected] : inputs) {
        const QRectF slotRect(
            SLOT_INSET - SLOT_RADIUS, top + ROW_HEIGHT * 0.5 - SLOT_RADIUS, 2 * SLOT_RADIUS, 2 * SLOT_RADIUS);
        const QRectF labelRect(LABEL_LEFT, top, WIDTH - LABEL_LEFT - LABEL_RIGHT_MARGIN, ROW_HEIGHT);
        inputSlots.emplace_back(slotRect, property, label, labelRect, connected);
        top += ROW_HEIGHT;
    }
    updateSeparators();
}

void NodeItem::updateSeparators()
{
    const std::size_t wanted = inputSlots.empty() ? 0 : inputSlots.size() - 1;
    if (separators.size() == wanted && (wanted == 0 || separators.front().y1() == headerHeight + 25.5))
        return;
    separators.clear();
    separators.reserve(wanted);
    for (std::size_t k = 1; k <= wanted; ++k) {
        const double y = headerHeight + ROWS_MARGIN * 0.5 + ROW_HEIGHT * static_cast<double>(k) + 0.5;
        separators.emplace_back(SEPARATOR_LEFT, y, SEPARATOR_RIGHT, y);
    }
}

QRectF NodeItem::boundingRect() const
{
    return geometryBoundingRect().adjusted(-1.0, -1.0, 1.0, 1.0);
}

void NodeItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const double lod = QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter->worldTransform());
    if (lod <= LABEL_LEVEL_OF_DETAIL) {
        paintLowDetail(*painter);
        return;
    }
    const Palette& palette = Palette::get();
    if (!inputSlots.empty()) {
        painter->setPen(isSelected() ? palette.selectedPen : palette.outlinePen);
        painter->setBrush(palette.fillBrush);
        painter->drawRect(geometryBoundingRect().adjusted(0.5, 0.5, -0.5, -0.5));
    }
    paintTitle(*painter, lod);
    if (hasThumbnail)
        paintThumbnail(*painter);
    outputSlot.paint(*painter, outputSlotState(), lod);
    if (lod > TEXT_LEVEL_OF_DETAIL && !separators.empty()) {
        painter->setPen(palette.separatorPen);
        painter->drawLines(separators.data(), static_cast<int>(separators.size()));
    }
    for (InputSlot& slot : inputSlots)
        slot.paint(*painter, inputSlotState(slot), lod);
}

void NodeItem::paintTitle(QPainter& painter, double levelOfDetail)
{
    const Palette& palette = Palette::get();
    const double width = WIDTH - TEXT_LEFT - 2.0 * SLOT_INSET - SLOT_RADIUS;
    if (!titleCacheValid) {
        titleText = makeStaticText(
            QFontMetricsF(palette.titleFont).elidedText(title, Qt::ElideRight, width), palette.titleFont);
        classText = makeStaticText(
            QFontMetricsF(palette.classFont).elidedText(className, Qt::ElideRight, width), palette.classFont);
        titleCacheValid = true;
    }
    const QPointF titleAt(TEXT_LEFT, 5.0);
    const QPointF classAt(TEXT_LEFT, 21.0);
    if (levelOfDetail > TEXT_LEVEL_OF_DETAIL) {
        painter.setFont(palette.titleFont);
        painter.setPen(palette.titlePen);
        painter.drawStaticText(titleAt, titleText);
        painter.setFont(palette.classFont);
        painter.setPen(palette.classNamePen);
        painter.drawStaticText(classAt, classText);
        return;
    }
    const QSizeF titleSize = titleText.size();
    painter.fillRect(
        QRectF(titleAt.x(), titleAt.y() + titleSize.height() * 0.375, titleSize.width(), titleSize.height() * 0.25),
        palette.title);
}

void NodeItem::paintThumbnail(QPainter& painter)
{
    const ThumbnailClient* thumbnails = view ? view->getThumbnailClient() : nullptr;
    const EntityHolder<Entity> entity = node->getEntity();
    if (!thumbnails || !entity)
        return;
    const QPixmap pixmap = thumbnails->getThumbnail(entity);
    if (!pixmap.isNull())
        painter.drawPixmap(QRectF(THUMBNAIL_MARGIN, TITLE_HEIGHT, THUMBNAIL_SIZE, THUMBNAIL_SIZE), pixmap,
            QRectF(QPointF(0.0, 0.0), pixmap.size()));
}

void NodeItem::paintLowDetail(QPainter& painter)
{
    // Far away a node is a coloured box with marks for its slots: fills without antialiasing are the cheapest draw.
    const Palette& palette = Palette::get();
    const bool antialiased = painter.testRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.fillRect(geometryBoundingRect(), isSelected() ? palette.selected : palette.fill);
    const auto slotColor = [&palette](int state) -> const QColor& {
        return state == Slot::ACCEPTING ? palette.accepting
                                        : (state == Slot::REFUSING ? palette.refusing : palette.wire);
    };
    painter.fillRect(outputSlot.getRect(), slotColor(outputSlotState()));
    for (const InputSlot& slot : inputSlots)
        painter.fillRect(slot.getRect(), slotColor(inputSlotState(slot)));
    painter.setRenderHint(QPainter::Antialiasing, antialiased);
}

int NodeItem::inputSlotState(const InputSlot& slot) const
{
    const ConnectionPreviewItem* preview = view ? view->getPreview() : nullptr;
    if (!preview || !preview->startsAtOutput() || !preview->getAnchor())
        return Slot::NORMAL;
    if (!slot.getRect().contains(mapFromScene(preview->getEnd())))
        return Slot::NORMAL;
    return view->canConnect(*preview->getAnchor(), *this, slot.getProperty()) ? Slot::ACCEPTING : Slot::REFUSING;
}

int NodeItem::outputSlotState() const
{
    const ConnectionPreviewItem* preview = view ? view->getPreview() : nullptr;
    if (!preview || preview->startsAtOutput() || !preview->getAnchor())
        return Slot::NORMAL;
    if (!outputSlot.getRect().contains(mapFromScene(preview->getEnd())))
        return Slot::NORMAL;
    return view->canConnect(*this, *preview->getAnchor(), preview->getAnchorInput()) ? Slot::ACCEPTING : Slot::REFUSING;
}

NodeItem::Slot* NodeItem::getSlotOnPosition(const QPointF& scenePos)
{
    const QPointF local = mapFromScene(scenePos);
    if (outputSlot.getRect().contains(local))
        return &outputSlot;
    for (InputSlot& slot : inputSlots)
        if (slot.getRect().contains(local))
            return &slot;
    return nullptr;
}

NodeItem::InputSlot* NodeItem::getInputSlot(StringView name)
{
    const auto found = std::find_if(
        inputSlots.begin(), inputSlots.end(), [name](const InputSlot& slot) { return slot.getProperty() == name; });
    return found == inputSlots.end() ? nullptr : &*found;
}

QPointF NodeItem::inSlotPosition(StringView name) const
{
    for (const InputSlot& slot : inputSlots)
        if (slot.getProperty() == name)
            return slot.getRect().center();
    return {};
}

Array<QPointer<NodeItem>> NodeItem::getInputs() const
{
    Array<QPointer<NodeItem>> result;
    for (const ConnectionItem* connection : connections)
        if (connection->getTo().second == this && connection->getFrom())
            result.emplace_back(connection->getFrom());
    return result;
}

void NodeItem::commitPosition()
{
    node->setPosition(pos());
}

void NodeItem::attachConnection(ConnectionItem* connection)
{
    connections.push_back(connection);
    if (connection->getFrom() == this && outputSlot.wireCount++ == 0)
        update();
}

void NodeItem::detachConnection(ConnectionItem* connection)
{
    const auto found = std::find(connections.begin(), connections.end(), connection);
    if (found == connections.end())
        return;
    connections.erase(found);
    if (connection->getFrom() == this && --outputSlot.wireCount == 0)
        update();
}

QVariant NodeItem::itemChange(GraphicsItemChange change, const QVariant& value)
{
    if (change == ItemPositionChange)
        Q_EMIT positionChanged(*this, value.toPointF());
    return QGraphicsObject::itemChange(change, value);
}

void NodeItem::mousePressEvent(QGraphicsSceneMouseEvent* event)
{
    pressScenePos = event->scenePos();
    QGraphicsObject::mousePressEvent(event);
}

void NodeItem::mouseReleaseEvent(QGraphicsSceneMouseEvent* event)
{
    // In the tree-selection mode the press selected the whole input tree; a plain click must not narrow it again.
    if (event->button() == Qt::LeftButton && view && view->getState() == GraphView::State::SelectTree
        && event->scenePos() == pressScenePos) {
        event->accept();
        return;
    }
    QGraphicsObject::mouseReleaseEvent(event);
}

} // namespace Marlix::Widgets
