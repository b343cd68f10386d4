#include "MapDelegate.h"

#include "MapMainContent.h"
#include "acquisition/ExifToolHelper.h"
#include "commons/Log.h"
#include "location/LocationHelper.h"
#include "metadata/MetadataStorage.h"
#include "platform/MainQueue.h"
#include "session/DataModel.h"
#include "session/StringHelpers.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

struct MapDelegate::PendingChange
{
    enum class Kind { add, remove, removeAll };
    Kind kind;
    Marker marker;
    QString smartPath;
};

// One set of points and the clusters they form. The index is rebuilt from a snapshot when the
// points change: at once for few points, otherwise on the index queue, one build at a time.
struct MapDelegate::IndexedLayer
{
    explicit IndexedLayer(double radius)
        : radius(radius)
        , index(std::make_shared<MarkerClusterIndex>(std::vector<MarkerClusterIndex::Point>(),
                                                     radius))
    { }

    const double radius;
    std::shared_ptr<const MarkerClusterIndex> index;
    // The points changed after the index was made.
    bool stale = false;
    bool building = false;
    // While markers keep coming, builds take at most half of the time, so that they do not
    // starve the readers; once they stop for half a build's time, the last ones show at once.
    std::chrono::steady_clock::time_point nextBuild {};
    std::chrono::steady_clock::duration lastBuildTook {};
    std::chrono::steady_clock::time_point changed {};
    bool wakeUpPosted = false;

    void markStale()
    {
        stale = true;
        changed = std::chrono::steady_clock::now();
    }
};

namespace {

// A box over coordinates, started so that the first coordinate sets both ends.
struct CoordinateBox
{
    double minLatitude = 90.0, minLongitude = 180.0;
    double maxLatitude = -90.0, maxLongitude = -180.0;
    bool empty = true;

    void add(Coordinate2D c)
    {
        minLatitude = std::min(minLatitude, c.latitude);
        maxLatitude = std::max(maxLatitude, c.latitude);
        minLongitude = std::min(minLongitude, c.longitude);
        maxLongitude = std::max(maxLongitude, c.longitude);
        empty = false;
    }
    double latitudeExtent() const { return maxLatitude - minLatitude; }
    double longitudeExtent() const { return maxLongitude - minLongitude; }
    Coordinate2D center() const
    {
        return {(minLatitude + maxLatitude) / 2.0, (minLongitude + maxLongitude) / 2.0};
    }
};

// A file's position as the store holds it: the two numbers, and for files outside the QuickTime
// family their references.
struct StoredPosition
{
    std::optional<QString> latitude, longitude, latitudeRef, longitudeRef;
};

StoredPosition storedPosition(const Node &node)
{
    // One visit of the store's queue for all four: the readers hand over markers by the
    // thousand.
    static const QStringList keys {u"GPSLatitude#"_s, u"GPSLongitude#"_s, u"GPSLatitudeRef"_s,
                                   u"GPSLongitudeRef"_s};
    const QList<std::optional<QString>> values = MetadataStorage::shared().getStringValues(
        node.absolutePath, keys, MetadataSource::ExifToolGeneric);
    return {values.at(0), values.at(1), values.at(2), values.at(3)};
}

// The place of a node from its ExifTool values, or absent when they do not make one. Signed
// numbers for the QuickTime family, whose references are not looked at; otherwise unsigned ones
// with their references, north and east when missing.
std::optional<Coordinate2D> coordinateFromStrings(const Node &node, const StoredPosition &stored)
{
    const LocationHelper &helper = LocationHelper::shared();
    if (ExifToolHelper::isQuickTimeFamily(QFileInfo(node.absolutePath).suffix()))
        return helper.coordinateFromDD(*stored.latitude, *stored.longitude);
    return helper.createCLLocationCoordinate2DFrom(*stored.latitude, *stored.longitude,
                                                   stored.latitudeRef.value_or(u"N"_s),
                                                   stored.longitudeRef.value_or(u"E"_s));
}

ClusterSelectionState selectionState(quint32 selected, quint32 members)
{
    if (selected == 0 || members == 0)
        return ClusterSelectionState::none;
    return selected == members ? ClusterSelectionState::all : ClusterSelectionState::some;
}

} // namespace

MapDelegate::MapDelegate(DataModel &model)
    : m_model(model)
    , m_clock([] { return std::chrono::steady_clock::now(); })
    , m_fileLayer(std::make_unique<IndexedLayer>(clusterRadius))
    , m_plainLayer(std::make_unique<IndexedLayer>(plainThinningRadius))
    , m_self(std::make_shared<MapDelegate *>(this))
{ }

MapDelegate::~MapDelegate() = default;

std::function<void()> MapDelegate::guarded(std::function<void(MapDelegate &)> block)
{
    return [weak = std::weak_ptr<MapDelegate *>(m_self), block = std::move(block)] {
        if (const auto self = weak.lock())
            block(**self);
    };
}

void MapDelegate::setMapView(MapView *view)
{
    m_view = view;
    m_shownSequence = 0;
    if (m_view)
        m_state = m_view->viewState();
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

void MapDelegate::setOverlayModeSource(std::function<MapOverlayMode()> source)
{
    m_overlayMode = std::move(source);
}

void MapDelegate::setupMapListeners()
{
    const auto on = [this](std::function<void(MapDelegate &)> block) {
        return [run = guarded(std::move(block))](const auto &) {
            run();
        };
    };
    m_model._selectedNodes->addColdListener(
        on([](MapDelegate &self) { self.selectionDidChange(); }));
    // Pins change in the middle of the model's own work; the markers follow once it is done.
    m_model._pins->addColdListener(on([](MapDelegate &self) {
        MainQueue::post(self.guarded([](MapDelegate &self) { self.syncPinAnnotations(); }));
    }));
    m_model._currentPinIndex->addColdListener(on([](MapDelegate &self) {
        self.m_sceneValid = false;
        self.setNeedsSceneUpdate();
    }));
    recomputeSelectionFlags();
    syncPinAnnotations();
}

void MapDelegate::install()
{
    MediaFileMarkers::install(this);
    MapAnnotationSink::install(this);
}

void MapDelegate::uninstall()
{
    if (MediaFileMarkers::installed() == this)
        MediaFileMarkers::install(nullptr);
    if (MapAnnotationSink::installed() == this)
        MapAnnotationSink::install(nullptr);
}

// ---- Markers of files

std::optional<Coordinate2D> MapDelegate::markerCoordinate(const Node &node)
{
    const StoredPosition stored = storedPosition(node);
    if (!stored.longitude || !stored.latitude)
        qFatal("Could not parse GPS data for %s", qPrintable(node.absolutePath));
    return coordinateFromStrings(node, stored);
}

void MapDelegate::addMarker(const NodePtr &node)
{
    enqueue({PendingChange::Kind::add,
             Marker {node, node->smartAbsolutePath(), markerCoordinate(*node)}, QString()});
}

void MapDelegate::removeMediaFileMarker(const QString &path)
{
    enqueue({PendingChange::Kind::remove, Marker {},
             StringHelpers::stringByExpandingAllNumberGroups(path)});
}

void MapDelegate::removeAllMediaFileMarkers()
{
    enqueue({PendingChange::Kind::removeAll, Marker {}, QString()});
}

void MapDelegate::enqueue(PendingChange change)
{
    bool post = false;
    {
        std::lock_guard lock(m_pendingMutex);
        m_pending.push_back(std::move(change));
        post = !std::exchange(m_flushPosted, true);
    }
    if (MainQueue::isMainThread())
        applyPendingChanges();
    else if (post)
        MainQueue::post(guarded([](MapDelegate &self) { self.applyPendingChanges(); }));
}

void MapDelegate::applyPendingChanges()
{
    std::vector<PendingChange> changes;
    {
        std::lock_guard lock(m_pendingMutex);
        changes.swap(m_pending);
        m_flushPosted = false;
    }
    if (changes.empty())
        return;
    bool removed = false;
    for (PendingChange &change : changes) {
        switch (change.kind) {
        case PendingChange::Kind::add:
            removed |= removeMarkerOfPath(change.marker.smartAbsolutePath);
            insertMarker(std::move(change.marker));
            break;
        case PendingChange::Kind::remove:
            removed |= removeMarkerOfPath(change.smartPath);
            break;
        case PendingChange::Kind::removeAll:
            // Pins and plain markers stay.
            m_firstMarkerId += quint32(m_markers.size());
            m_markers.clear();
            m_selectedById.clear();
            m_markerIdBySmartPath.clear();
            m_markerCount = 0;
            removed = true;
            break;
        }
    }
    // New markers show with the next index; until then the scene stays as it is. A marker that
    // went leaves its cluster at once.
    m_fileLayer->markStale();
    if (removed) {
        m_countsValid = false;
        m_sceneValid = false;
    }
    setNeedsSceneUpdate();
}

void MapDelegate::insertMarker(Marker marker)
{
    const quint32 id = m_firstMarkerId + quint32(m_markers.size());
    m_markerIdBySmartPath.insert(marker.smartAbsolutePath, id);
    m_selectedById.push_back(m_selectedPaths.contains(marker.smartAbsolutePath) ? 1 : 0);
    m_markers.push_back(std::move(marker));
    ++m_markerCount;
}

bool MapDelegate::removeMarkerOfPath(const QString &smartPath)
{
    const auto found = m_markerIdBySmartPath.constFind(smartPath);
    if (found == m_markerIdBySmartPath.cend())
        return false;
    const quint32 id = *found;
    m_markerIdBySmartPath.erase(found);
    m_markers[id - m_firstMarkerId].reset();
    m_selectedById[id - m_firstMarkerId] = 0;
    --m_markerCount;
    m_selectedAnnotations.removeAll(AnnotationRef {AnnotationKind::mediaFile, id});
    return true;
}

const MapDelegate::Marker *MapDelegate::markerById(qint64 id) const
{
    const qint64 slot = id - m_firstMarkerId;
    if (slot < 0 || slot >= qint64(m_markers.size()) || !m_markers[size_t(slot)])
        return nullptr;
    return &*m_markers[size_t(slot)];
}

QList<MapDelegate::Marker> MapDelegate::markers() const
{
    QList<Marker> result;
    result.reserve(m_markerCount);
    for (const std::optional<Marker> &marker : m_markers) {
        if (marker)
            result.append(*marker);
    }
    return result;
}

qsizetype MapDelegate::markerCount() const
{
    return m_markerCount;
}

qsizetype MapDelegate::indexedMarkerCount() const
{
    return m_fileLayer->index->pointCount();
}

// ---- Plain markers of the output pass

void MapDelegate::addPointAnnotation(const PointAnnotation &annotation)
{
    m_pointAnnotations.append(annotation);
    m_plainLayer->markStale();
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

void MapDelegate::removeAllPointAnnotations()
{
    m_pointAnnotations.clear();
    m_selectedAnnotations.removeIf(
        [](const AnnotationRef &ref) { return ref.kind == AnnotationKind::plain; });
    m_plainLayer->markStale();
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

// ---- Pins

void MapDelegate::syncPinAnnotations()
{
    const QList<Pin> &pins = m_model._pins->ref();
    m_pinMarkers.removeIf([&](const PinMarker &marker) {
        if (marker.pinIndex < pins.size())
            return false;
        m_selectedAnnotations.removeAll(AnnotationRef {AnnotationKind::pin, marker.pinIndex});
        return true;
    });
    for (int index = 0; index < pins.size(); ++index) {
        const Pin &pin = pins.at(index);
        const auto existing = std::find_if(m_pinMarkers.begin(), m_pinMarkers.end(),
                                           [&](const PinMarker &m) { return m.pinIndex == index; });
        if (existing != m_pinMarkers.end()) {
            existing->coordinate = {pin.latitude, pin.longitude};
            existing->title = pin.name;
            continue;
        }
        m_pinMarkers.append({index, {pin.latitude, pin.longitude}, pin.name});
        // Selecting the new pin's marker once makes it the current pin, as a click would.
        MainQueue::post(guarded([index](MapDelegate &self) {
            const AnnotationRef ref {AnnotationKind::pin, index};
            self.selectAnnotation(ref, false);
            self.deselectAnnotation(ref, false);
        }));
    }
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

void MapDelegate::selectPinMarker(int pinIndex, bool animated)
{
    const auto found = std::find_if(m_pinMarkers.cbegin(), m_pinMarkers.cend(),
                                    [&](const PinMarker &m) { return m.pinIndex == pinIndex; });
    if (found != m_pinMarkers.cend())
        selectAnnotation({AnnotationKind::pin, pinIndex}, animated);
}

// ---- Selection

bool MapDelegate::isSelected(const Node &node) const
{
    return m_selectedPaths.contains(node.smartAbsolutePath());
}

void MapDelegate::recomputeSelectionFlags()
{
    const QList<NodePtr> &selection = m_model.selectedNodes();
    m_selectedPaths.clear();
    m_selectedPaths.reserve(selection.size());
    std::fill(m_selectedById.begin(), m_selectedById.end(), 0);
    // Through the selection rather than all markers: it is usually the smaller of the two.
    for (const NodePtr &node : selection) {
        const QString path = node->smartAbsolutePath();
        m_selectedPaths.insert(path);
        const auto id = m_markerIdBySmartPath.constFind(path);
        if (id != m_markerIdBySmartPath.cend())
            m_selectedById[*id - m_firstMarkerId] = 1;
    }
    m_countsValid = false;
    m_sceneValid = false;
}

void MapDelegate::selectionDidChange()
{
    recomputeSelectionFlags();
    setNeedsSceneUpdate();
    // Runs before the block that a table posts to clear its flag, so the flag still tells where
    // the selection came from.
    MainQueue::post(guarded([](MapDelegate &self) {
        self.isProgrammaticallySyncingSelection = true;
        const QList<NodePtr> &selection = self.m_model.selectedNodes();
        // The map keeps only the first of the selected files' annotations as its selected one,
        // so the search stops there.
        QList<AnnotationRef> annotations;
        for (const NodePtr &node : selection) {
            const auto id = self.m_markerIdBySmartPath.constFind(node->smartAbsolutePath());
            if (id != self.m_markerIdBySmartPath.cend() && self.markerById(*id)->coordinate) {
                annotations.append({AnnotationKind::mediaFile, *id});
                break;
            }
        }
        self.setSelectedAnnotations(annotations);
        const bool fromTable = MapMainContent::selectionChangedFromTable();
        const PreviewTab tab = MapMainContent::shownPreviewTab();
        const bool mapBesideTable
            = tab == PreviewTab::vertical || tab == PreviewTab::combinedHorizontal;
        if (fromTable && mapBesideTable && !selection.isEmpty())
            self.adjustMapToShowNodes(selection);
        if (!fromTable && (mapBesideTable || tab == PreviewTab::items))
            MapMainContent::scrollToFirstSelectedItemIfNeeded();
        self.isProgrammaticallySyncingSelection = false;
    }));
}

void MapDelegate::refreshClusterSelectionStates()
{
    m_countsValid = false;
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

void MapDelegate::selectAnnotation(const AnnotationRef &annotation, bool animated)
{
    Q_UNUSED(animated);
    // The map keeps one selected annotation; selecting it again tells nobody.
    if (m_selectedAnnotations.size() == 1 && m_selectedAnnotations.first() == annotation)
        return;
    const QList<AnnotationRef> previous = std::exchange(m_selectedAnnotations, {annotation});
    for (const AnnotationRef &ref : previous)
        didDeselectAnnotation(ref);
    didSelectAnnotation(annotation);
}

void MapDelegate::deselectAnnotation(const AnnotationRef &annotation, bool animated)
{
    Q_UNUSED(animated);
    if (m_selectedAnnotations.removeAll(annotation) > 0)
        didDeselectAnnotation(annotation);
}

void MapDelegate::setSelectedAnnotations(const QList<AnnotationRef> &annotations)
{
    // As on the platform's map, only the first of the list becomes selected.
    if (annotations.isEmpty()) {
        const QList<AnnotationRef> previous = std::exchange(m_selectedAnnotations, {});
        for (const AnnotationRef &ref : previous)
            didDeselectAnnotation(ref);
        return;
    }
    selectAnnotation(annotations.first(), false);
}

void MapDelegate::didSelectAnnotation(const AnnotationRef &annotation)
{
    if (annotation.kind == AnnotationKind::pin) {
        m_model.setCurrentPinIndex(int(annotation.id));
        return;
    }
    const MapOverlayMode mode = m_overlayMode ? m_overlayMode() : MapOverlayMode::fileSelector;
    if (mode != MapOverlayMode::fileSelector || isProgrammaticallySyncingSelection)
        return;

    if (annotation.kind == AnnotationKind::cluster) {
        const QList<NodePtr> members = clusterMembers(annotation);
        CoordinateBox box;
        for (const NodePtr &node : members) {
            const auto id = m_markerIdBySmartPath.value(node->smartAbsolutePath());
            if (const Marker *marker = markerById(id); marker && marker->coordinate)
                box.add(*marker->coordinate);
        }
        if (box.latitudeExtent() < samePlaceDegrees && box.longitudeExtent() < samePlaceDegrees) {
            // The members are one place: no zoom separates them, so the click selects them.
            m_model.setSelectedNodes(members);
            MapMainContent::selectRowsAccordingToCurrentSelectionVariables();
            lastClusterSelectionTime = now();
            refreshClusterSelectionStates();
        } else {
            setRegion({box.center(), box.latitudeExtent() * 1.5, box.longitudeExtent() * 1.5},
                      true);
        }
        deselectAnnotation(annotation, false);
        return;
    }

    if (annotation.kind == AnnotationKind::mediaFile) {
        if (lastClusterSelectionTime
            && now() - *lastClusterSelectionTime
                < std::chrono::duration<double>(clusterEchoSeconds)) {
            deselectAnnotation(annotation, false);
            Log::line(u"MapDelegate: Ignoring individual annotation selection immediately after "
                      "cluster selection");
            return;
        }
        const Marker *marker = markerById(annotation.id);
        if (!marker)
            return;
        m_model.setSelectedNodes({marker->node});
        MapMainContent::selectRowsAccordingToCurrentSelectionVariables();
        refreshClusterSelectionStates();
    }
}

void MapDelegate::didDeselectAnnotation(const AnnotationRef &annotation)
{
    // The colour follows the node's selection, which a deselection leaves alone.
    if (annotation.kind == AnnotationKind::mediaFile) {
        m_sceneValid = false;
        setNeedsSceneUpdate();
    }
}

// ---- Camera

MapViewState MapDelegate::viewState() const
{
    return m_view ? m_view->viewState() : m_state;
}

void MapDelegate::viewStateDidChange(const MapViewState &state)
{
    m_state = state;
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

void MapDelegate::setViewState(const MapViewState &state, bool animated)
{
    m_state = state;
    if (m_view)
        m_view->setViewState(state, animated);
    m_sceneValid = false;
    setNeedsSceneUpdate();
}

void MapDelegate::setRegion(const CoordinateRegion &region, bool animated)
{
    setViewState(MapGeometry::stateShowing(viewState(), region), animated);
}

void MapDelegate::setCenterCoordinate(Coordinate2D center, bool animated)
{
    MapViewState state = viewState();
    state.center = center;
    setViewState(state, animated);
}

void MapDelegate::adjustMapToShowNodes(const QList<NodePtr> &nodes)
{
    CoordinateBox box;
    for (const NodePtr &node : nodes) {
        const StoredPosition stored = storedPosition(*node);
        if (!stored.longitude || !stored.latitude)
            continue;
        if (const auto coordinate = coordinateFromStrings(*node, stored))
            box.add(*coordinate);
    }
    if (box.empty)
        return;
    setRegion({box.center(), std::max(box.latitudeExtent() * 1.3, 0.01),
               std::max(box.longitudeExtent() * 1.3, 0.01)},
              true);
}

// ---- The scene

void MapDelegate::setNeedsSceneUpdate()
{
    if (std::exchange(m_sceneUpdatePosted, true))
        return;
    MainQueue::post(guarded([](MapDelegate &self) {
        self.m_sceneUpdatePosted = false;
        self.updateSceneNow();
    }));
}

void MapDelegate::rebuildIndex(
    IndexedLayer &layer, const std::function<std::vector<MarkerClusterIndex::Point>()> &points)
{
    if (layer.building || !layer.stale)
        return;
    std::vector<MarkerClusterIndex::Point> snapshot = points();
    if (qsizetype(snapshot.size()) <= immediateIndexLimit) {
        layer.stale = false;
        layer.index = std::make_shared<MarkerClusterIndex>(snapshot, layer.radius);
        m_countsValid = false;
        m_sceneValid = false;
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    const auto due = std::min(layer.nextBuild, layer.changed + layer.lastBuildTook / 2);
    if (now < due) {
        if (!std::exchange(layer.wakeUpPosted, true)) {
            const auto wait = std::chrono::ceil<std::chrono::milliseconds>(due - now);
            MainQueue::postAfter(int(wait.count()), guarded([target = &layer](MapDelegate &self) {
                                     target->wakeUpPosted = false;
                                     self.setNeedsSceneUpdate();
                                 }));
        }
        return;
    }
    layer.stale = false;
    layer.building = true;
    IndexedLayer *target = &layer;
    const double radius = layer.radius;
    m_indexQueue.async([weak = std::weak_ptr<MapDelegate *>(m_self), target, radius,
                        snapshot = std::move(snapshot)] {
        const auto started = std::chrono::steady_clock::now();
        auto index = std::make_shared<const MarkerClusterIndex>(snapshot, radius);
        const auto took = std::chrono::steady_clock::now() - started;
        MainQueue::post([weak, target, took, index = std::move(index)] {
            const auto self = weak.lock();
            if (!self)
                return;
            target->index = index;
            target->building = false;
            target->nextBuild = std::chrono::steady_clock::now() + took;
            target->lastBuildTook = took;
            (*self)->m_countsValid = false;
            (*self)->m_sceneValid = false;
            (*self)->setNeedsSceneUpdate();
        });
    });
}

void MapDelegate::recomputeCounts()
{
    const std::vector<quint32> &leaves = m_fileLayer->index->leafOrder();
    m_selectedBefore.assign(leaves.size() + 1, 0);
    m_presentBefore.assign(leaves.size() + 1, 0);
    for (size_t i = 0; i < leaves.size(); ++i) {
        const qint64 slot = qint64(leaves[i]) - m_firstMarkerId;
        const bool present = slot >= 0 && slot < qint64(m_markers.size()) && m_markers[size_t(slot)]
            && m_markers[size_t(slot)]->coordinate;
        m_presentBefore[i + 1] = m_presentBefore[i] + (present ? 1 : 0);
        m_selectedBefore[i + 1]
            = m_selectedBefore[i] + (present && m_selectedById[size_t(slot)] ? 1 : 0);
    }
    m_countsValid = true;
}

const MapScene &MapDelegate::scene()
{
    rebuildIndex(*m_fileLayer, [this] {
        std::vector<MarkerClusterIndex::Point> points;
        points.reserve(size_t(m_markerCount));
        for (size_t slot = 0; slot < m_markers.size(); ++slot) {
            const std::optional<Marker> &marker = m_markers[slot];
            if (marker && marker->coordinate)
                points.push_back({*marker->coordinate, quint32(m_firstMarkerId + slot)});
        }
        return points;
    });
    rebuildIndex(*m_plainLayer, [this] {
        std::vector<MarkerClusterIndex::Point> points;
        points.reserve(size_t(m_pointAnnotations.size()));
        for (qsizetype i = 0; i < m_pointAnnotations.size(); ++i) {
            const PointAnnotation &a = m_pointAnnotations.at(i);
            points.push_back({{a.latitude, a.longitude}, quint32(i)});
        }
        return points;
    });
    if (!m_countsValid) {
        recomputeCounts();
        m_sceneValid = false;
    }
    if (m_sceneValid)
        return m_scene;

    m_scene.items.clear();
    ++m_scene.sequence;
    m_sceneFileIndex = m_fileLayer->index;
    m_sceneValid = true;
    const MapViewState state = viewState();
    if (state.width <= 0.0 || state.height <= 0.0)
        return m_scene;
    // A margin of half a view, so that a short move shows markers before the next scene.
    const QRectF rect = MapGeometry::unitRect(state, std::max(state.width, state.height) / 2.0);
    const int level = MarkerClusterIndex::levelForZoom(state.zoom);

    const MarkerClusterIndex &plain = *m_plainLayer->index;
    for (const MarkerClusterIndex::Found &found : plain.entriesIn(level, rect)) {
        const MarkerClusterIndex::Entry &entry = plain.entry(found.level, found.index);
        const quint32 first = plain.leaves(entry).front();
        if (first >= quint32(m_pointAnnotations.size()))
            continue;
        const PointAnnotation &annotation = m_pointAnnotations.at(first);
        MapSceneItem item;
        item.ref = {AnnotationKind::plain, first};
        item.coordinate = {annotation.latitude, annotation.longitude + 360.0 * found.turns};
        item.tint = MarkerTint::plainRed;
        item.count = entry.count;
        item.title = annotation.title.value_or(QString());
        item.subtitle = annotation.subtitle;
        m_scene.items.append(item);
    }

    const MarkerClusterIndex &files = *m_sceneFileIndex;
    for (const MarkerClusterIndex::Found &found : files.entriesIn(level, rect)) {
        const MarkerClusterIndex::Entry &entry = files.entry(found.level, found.index);
        const quint32 present
            = m_presentBefore[entry.firstLeaf + entry.count] - m_presentBefore[entry.firstLeaf];
        if (present == 0)
            continue;
        MapSceneItem item;
        if (entry.count == 1) {
            const quint32 id = files.leaves(entry).front();
            const Marker *marker = markerById(id);
            item.ref = {AnnotationKind::mediaFile, id};
            item.coordinate = {marker->coordinate->latitude,
                               marker->coordinate->longitude + 360.0 * found.turns};
            item.tint = m_selectedById[id - m_firstMarkerId] ? MarkerTint::selectedBlue
                                                             : MarkerTint::unselectedGray;
            item.glyph = MarkerGlyph::photo;
        } else {
            const quint32 selected = m_selectedBefore[entry.firstLeaf + entry.count]
                - m_selectedBefore[entry.firstLeaf];
            item.ref = AnnotationRef::cluster(found.level, found.index);
            item.coordinate = MarkerClusterIndex::coordinate(entry, found.turns);
            item.count = present;
            item.glyph = MarkerGlyph::photoStack;
            switch (selectionState(selected, present)) {
            case ClusterSelectionState::all:
                item.tint = MarkerTint::selectedBlue;
                break;
            case ClusterSelectionState::some:
                item.tint = MarkerTint::partlyOrange;
                break;
            case ClusterSelectionState::none:
                item.tint = MarkerTint::clusterGray;
                break;
            }
        }
        m_scene.items.append(item);
    }

    const int currentPin = m_model.currentPinIndex();
    for (const PinMarker &pin : m_pinMarkers) {
        MapSceneItem item;
        item.ref = {AnnotationKind::pin, pin.pinIndex};
        item.coordinate
            = {pin.coordinate.latitude,
               MapGeometry::longitudeNear(pin.coordinate.longitude, state.center.longitude)};
        item.tint
            = pin.pinIndex == currentPin ? MarkerTint::selectedBlue : MarkerTint::partlyOrange;
        item.glyph = MarkerGlyph::mappinCircleFill;
        item.title = pin.title;
        m_scene.items.append(item);
    }
    return m_scene;
}

void MapDelegate::updateSceneNow()
{
    const MapScene &current = scene();
    if (m_view && current.sequence != m_shownSequence) {
        m_shownSequence = current.sequence;
        m_view->showScene(current);
    }
}

std::shared_ptr<const MarkerClusterIndex> MapDelegate::indexOf(AnnotationKind kind) const
{
    return kind == AnnotationKind::plain ? m_plainLayer->index : m_sceneFileIndex;
}

// ---- Finding annotations

std::optional<AnnotationRef> MapDelegate::findAnnotationView(QPointF point)
{
    const MapScene &current = scene();
    const MapViewState state = viewState();
    std::optional<AnnotationRef> found;
    for (const MapSceneItem &item : current.items) {
        const QPointF anchor = MapGeometry::pointForCoordinate(state, item.coordinate);
        if (!item.viewRect(anchor).contains(point))
            continue;
        if (item.ref.kind == AnnotationKind::cluster)
            return item.ref;
        found = item.ref;
    }
    return found;
}

std::optional<AnnotationRef> MapDelegate::nearestAnnotation(QPointF point, double within) const
{
    const MapViewState state = viewState();
    std::optional<AnnotationRef> nearest;
    double best = within;
    const auto consider = [&](const AnnotationRef &ref, Coordinate2D coordinate) {
        const QPointF p = MapGeometry::pointForCoordinate(state, coordinate);
        const double distance = std::hypot(p.x() - point.x(), p.y() - point.y());
        // Only a strictly shorter distance replaces the one found first.
        if (distance <= within && (!nearest || distance < best)) {
            nearest = ref;
            best = distance;
        }
    };
    for (size_t slot = 0; slot < m_markers.size(); ++slot) {
        const std::optional<Marker> &marker = m_markers[slot];
        if (marker && marker->coordinate)
            consider({AnnotationKind::mediaFile, qint64(m_firstMarkerId + slot)},
                     *marker->coordinate);
    }
    for (const PinMarker &pin : m_pinMarkers)
        consider({AnnotationKind::pin, pin.pinIndex}, pin.coordinate);
    for (qsizetype i = 0; i < m_pointAnnotations.size(); ++i) {
        const PointAnnotation &a = m_pointAnnotations.at(i);
        consider({AnnotationKind::plain, i}, {a.latitude, a.longitude});
    }
    return nearest;
}

QList<NodePtr> MapDelegate::nodesInRect(const QRectF &rect) const
{
    const MapViewState state = viewState();
    QList<NodePtr> nodes;
    for (const std::optional<Marker> &marker : m_markers) {
        if (marker && marker->coordinate
            && rect.contains(MapGeometry::pointForCoordinate(state, *marker->coordinate)))
            nodes.append(marker->node);
    }
    return nodes;
}

std::optional<Coordinate2D> MapDelegate::coordinateOf(const AnnotationRef &annotation) const
{
    switch (annotation.kind) {
    case AnnotationKind::plain:
        if (annotation.id < 0 || annotation.id >= m_pointAnnotations.size())
            return std::nullopt;
        return Coordinate2D {m_pointAnnotations.at(annotation.id).latitude,
                             m_pointAnnotations.at(annotation.id).longitude};
    case AnnotationKind::mediaFile:
        if (const Marker *marker = markerById(annotation.id))
            return marker->coordinate;
        return std::nullopt;
    case AnnotationKind::pin:
        for (const PinMarker &pin : m_pinMarkers) {
            if (pin.pinIndex == annotation.id)
                return pin.coordinate;
        }
        return std::nullopt;
    case AnnotationKind::cluster:
        return clusterCoordinate(annotation);
    }
    return std::nullopt;
}

NodePtr MapDelegate::nodeOf(const AnnotationRef &annotation) const
{
    if (annotation.kind != AnnotationKind::mediaFile)
        return nullptr;
    const Marker *marker = markerById(annotation.id);
    return marker ? marker->node : nullptr;
}

std::optional<Coordinate2D> MapDelegate::clusterCoordinate(const AnnotationRef &cluster) const
{
    const std::shared_ptr<const MarkerClusterIndex> index = indexOf(AnnotationKind::cluster);
    if (!index || cluster.clusterLevel() > MarkerClusterIndex::maximumLevel
        || cluster.clusterEntry() >= index->entryCount(cluster.clusterLevel()))
        return std::nullopt;
    return MarkerClusterIndex::coordinate(
        index->entry(cluster.clusterLevel(), cluster.clusterEntry()));
}

QList<NodePtr> MapDelegate::clusterMembers(const AnnotationRef &cluster) const
{
    QList<NodePtr> members;
    const std::shared_ptr<const MarkerClusterIndex> index = indexOf(AnnotationKind::cluster);
    if (cluster.kind != AnnotationKind::cluster || !index
        || cluster.clusterLevel() > MarkerClusterIndex::maximumLevel
        || cluster.clusterEntry() >= index->entryCount(cluster.clusterLevel()))
        return members;
    const auto &entry = index->entry(cluster.clusterLevel(), cluster.clusterEntry());
    for (const quint32 id : index->leaves(entry)) {
        if (const Marker *marker = markerById(id); marker && marker->coordinate)
            members.append(marker->node);
    }
    return members;
}

ClusterSelectionState MapDelegate::clusterSelectionState(const AnnotationRef &cluster) const
{
    quint32 selected = 0;
    const QList<NodePtr> members = clusterMembers(cluster);
    for (const NodePtr &node : members)
        selected += isSelected(*node) ? 1 : 0;
    return selectionState(selected, quint32(members.size()));
}

void MapDelegate::viewClicked(QPointF point)
{
    const std::optional<AnnotationRef> hit = findAnnotationView(point);
    if (!hit || hit->kind == AnnotationKind::plain)
        return;
    // A click always counts, also on the annotation that is selected already.
    deselectAnnotation(*hit, false);
    selectAnnotation(*hit, true);
}
