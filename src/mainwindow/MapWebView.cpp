#include "MapWebView.h"

#include "MapPageBridge.h"
#include "commons/Log.h"
#include "map/MapDelegate.h"
#include "platform/Resources.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QResizeEvent>
#include <QStandardPaths>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInterceptor>

#include <unistd.h>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// Lets the page reach the tile server and nothing else on the network; offline, nothing at all.
class TileRequestFilter : public QWebEngineUrlRequestInterceptor
{
public:
    void setAllowedHost(const QString &host)
    {
        QMutexLocker lock(&m_mutex);
        m_allowedHost = host;
    }

    // Runs on the engine's network thread.
    void interceptRequest(QWebEngineUrlRequestInfo &info) override
    {
        const QUrl url = info.requestUrl();
        if (url.isLocalFile() || url.scheme() == u"qrc" || url.scheme() == u"data"
            || url.scheme() == u"blob")
            return;
        QMutexLocker lock(&m_mutex);
        if (m_allowedHost.isEmpty() || url.host() != m_allowedHost)
            info.block(true);
    }

private:
    QMutex m_mutex;
    QString m_allowedHost;
};

// Opens the attribution's links in the browser instead of inside the map.
class MapWebPage : public QWebEnginePage
{
public:
    using QWebEnginePage::QWebEnginePage;

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override
    {
        if (type == NavigationTypeLinkClicked) {
            QDesktopServices::openUrl(url);
            return false;
        }
        return isMainFrame ? url.isLocalFile() : true;
    }

    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message,
                                  int line, const QString &source) override
    {
        if (level == ErrorMessageLevel)
            Log::line(
                u"MapWebView: %1 (%2:%3)"_s.arg(message, QFileInfo(source).fileName()).arg(line));
    }
};

struct SharedProfile
{
    QWebEngineProfile *profile = nullptr;
    TileRequestFilter *filter = nullptr;
};

SharedProfile &sharedProfile(const QString &cacheDirectory)
{
    static SharedProfile shared;
    if (shared.profile)
        return shared;
    // A named profile keeps its disk cache between runs, so tiles seen once load without
    // asking the server again.
    shared.profile = new QWebEngineProfile(u"palomet-map"_s, QCoreApplication::instance());
    const QString cache = cacheDirectory.isEmpty()
        ? QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + u"/map"_s
        : cacheDirectory;
    QDir().mkpath(cache);
    shared.profile->setCachePath(cache);
    shared.profile->setPersistentStoragePath(cache + u"/storage"_s);
    shared.profile->setHttpCacheType(QWebEngineProfile::DiskHttpCache);
    shared.profile->setHttpCacheMaximumSize(256 * 1024 * 1024);
    // The tile servers' rules ask every program to name itself.
    shared.profile->setHttpUserAgent(u"Palomet/%1 (photo location editor; Qt WebEngine)"_s.arg(
        QCoreApplication::applicationVersion().isEmpty() ? u"0.1"_s
                                                         : QCoreApplication::applicationVersion()));
    shared.filter = new TileRequestFilter;
    shared.filter->setParent(shared.profile);
    shared.profile->setUrlRequestInterceptor(shared.filter);

    QFile channelScript(u":/qtwebchannel/qwebchannel.js"_s);
    if (channelScript.open(QIODevice::ReadOnly)) {
        QWebEngineScript script;
        script.setName(u"qwebchannel"_s);
        script.setSourceCode(QString::fromUtf8(channelScript.readAll()));
        script.setInjectionPoint(QWebEngineScript::DocumentCreation);
        script.setWorldId(QWebEngineScript::MainWorld);
        shared.profile->scripts()->insert(script);
    } else {
        qFatal("MapWebView: the web channel's script is missing from QtWebChannel");
    }
    return shared;
}

QString tileHost(const QString &tileUrl)
{
    return QUrl(QString(tileUrl).replace(u'{', u'_').replace(u'}', u'_')).host();
}

bool paletteIsDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 128;
}

} // namespace

void MapWebView::prepareProcess()
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX")) {
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
        Log::line(u"Palomet runs as root: the map's web engine runs without its sandbox");
    }
}

QString MapWebView::onlineSettingKey()
{
    return u"mapTilesOnline"_s;
}

bool MapWebView::onlineSetting()
{
    UserDefaults &defaults = UserDefaults::standard();
    defaults.registerDefaults({{onlineSettingKey(), true}});
    return defaults.objectForKey(onlineSettingKey()).toBool();
}

MapWebView::MapWebView(MapDelegate &delegate, Options options, QWidget *parent)
    : MapWebView(std::move(options), parent)
{
    m_delegate = &delegate;
}

MapWebView::MapWebView(Options options, QWidget *parent)
    : QWebEngineView(parent)
    , m_options(std::move(options))
    , m_bridge(new MapPageBridge(this))
{
    m_state = {{30.0, 10.0}, 2.0, double(width()), double(height())};
    SharedProfile &shared = sharedProfile(m_options.cacheDirectory);
    shared.filter->setAllowedHost(m_options.online ? tileHost(m_options.tileUrl) : QString());
    auto *page = new MapWebPage(shared.profile, this);
    setPage(page);
    setContextMenuPolicy(Qt::NoContextMenu);
    // Files dropped on the map go to the window, not into the page.
    setAcceptDrops(false);
    QWebEngineSettings *settings = page->settings();
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, true);
    settings->setAttribute(QWebEngineSettings::ShowScrollBars, false);
    settings->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);

    auto *channel = new QWebChannel(page);
    channel->registerObject(u"palomet"_s, m_bridge);
    page->setWebChannel(channel);

    connect(m_bridge, &MapPageBridge::pageDidLoad, this, [this](double w, double h) {
        m_pageReady = true;
        m_state.width = w;
        m_state.height = h;
        sendSettings();
        requestView(false);
        if (m_delegate)
            m_delegate->viewStateDidChange(m_state);
        if (!m_pendingScene.isEmpty())
            emit m_bridge->sceneChanged(std::exchange(m_pendingScene, QString()));
        sendOverlays();
        emit pageReady();
    });
    connect(m_bridge, &MapPageBridge::viewDidChange, this,
            [this](double latitude, double longitude, double zoom, double w, double h,
                   quint64 request) {
                // Sent before the page took the newest request: the state asked for stands.
                if (request < m_viewRequest)
                    return;
                const MapViewState reported {{latitude, longitude}, zoom, w, h};
                // The page rounds to whole pixels; a change below one is no change.
                const QPointF shift = MapGeometry::pointForCoordinate(m_state, reported.center)
                    - QPointF(m_state.width / 2.0, m_state.height / 2.0);
                if (std::fabs(zoom - m_state.zoom) < 1e-6 && std::hypot(shift.x(), shift.y()) < 1.0
                    && w == m_state.width && h == m_state.height)
                    return;
                m_state = reported;
                if (m_delegate)
                    m_delegate->viewStateDidChange(m_state);
            });
    connect(m_bridge, &MapPageBridge::pageClicked, this, [this](double x, double y) {
        if (m_delegate)
            m_delegate->viewClicked({x, y});
        emit clicked({x, y});
    });
    connect(m_bridge, &MapPageBridge::scenePainted, this, [this](quint64 sequence) {
        m_paintedSequence = sequence;
        emit scenePainted(sequence);
    });
    connect(m_bridge, &MapPageBridge::baseLayerDidChange, this, [this](const QString &name) {
        m_baseLayer = name;
        emit baseLayerChanged(name);
    });

    load(QUrl::fromLocalFile(Resources::path(u"map/index.html"_s)));
}

MapWebView::~MapWebView()
{
    if (m_delegate && m_delegate->mapView() == this)
        m_delegate->setMapView(nullptr);
}

void MapWebView::setViewState(const MapViewState &state, bool animated)
{
    m_state.center = state.center;
    m_state.zoom = MapGeometry::clampedZoom(state.zoom);
    if (m_pageReady)
        requestView(animated);
}

void MapWebView::requestView(bool animated)
{
    emit m_bridge->viewRequested(m_state.center.latitude, m_state.center.longitude, m_state.zoom,
                                 animated, double(++m_viewRequest));
}

QString MapWebView::sceneJson(const MapScene &scene)
{
    QJsonArray items;
    for (const MapSceneItem &item : scene.items) {
        QJsonArray row {int(item.ref.kind), item.coordinate.latitude, item.coordinate.longitude,
                        int(item.tint),     int(item.glyph),          qint64(item.count)};
        if (item.ref.kind == AnnotationKind::plain) {
            row.append(item.title);
            row.append(item.subtitle);
        }
        items.append(row);
    }
    const QJsonObject object {{u"seq"_s, qint64(scene.sequence)}, {u"items"_s, items}};
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void MapWebView::showScene(const MapScene &scene)
{
    if (m_pageReady)
        emit m_bridge->sceneChanged(sceneJson(scene));
    else
        m_pendingScene = sceneJson(scene);
}

void MapWebView::showTrack(const QList<QList<Coordinate2D>> &segments)
{
    QJsonArray lines;
    for (const QList<Coordinate2D> &segment : segments) {
        QJsonArray line;
        for (const Coordinate2D &c : segment)
            line.append(QJsonArray {c.latitude, c.longitude});
        lines.append(line);
    }
    m_trackJson = QString::fromUtf8(QJsonDocument(lines).toJson(QJsonDocument::Compact));
    if (m_pageReady)
        emit m_bridge->trackChanged(m_trackJson);
}

void MapWebView::showLandings(const QList<GeotagMapContent::Landing> &landings)
{
    QJsonArray points;
    for (const GeotagMapContent::Landing &landing : landings)
        points.append(QJsonArray {landing.coordinate.latitude, landing.coordinate.longitude,
                                  landing.name, landing.taken});
    m_landingsJson = QString::fromUtf8(QJsonDocument(points).toJson(QJsonDocument::Compact));
    if (m_pageReady) {
        emit m_bridge->landingsChanged(m_landingsJson);
        emit m_bridge->landingHighlighted(m_highlightedLanding);
    }
}

void MapWebView::highlightLanding(int index)
{
    m_highlightedLanding = index;
    if (m_pageReady)
        emit m_bridge->landingHighlighted(index);
}

void MapWebView::setPlacingCursor(bool placing)
{
    if (m_pageReady)
        emit m_bridge->placingChanged(placing);
}

void MapWebView::sendOverlays()
{
    if (!m_trackJson.isEmpty())
        emit m_bridge->trackChanged(m_trackJson);
    if (!m_landingsJson.isEmpty())
        emit m_bridge->landingsChanged(m_landingsJson);
    emit m_bridge->landingHighlighted(m_highlightedLanding);
}

void MapWebView::setOnline(bool online)
{
    m_options.online = online;
    sharedProfile(m_options.cacheDirectory)
        .filter->setAllowedHost(online ? tileHost(m_options.tileUrl) : QString());
    sendSettings();
}

void MapWebView::sendSettings()
{
    if (!m_pageReady)
        return;
    const QJsonObject settings {
        {u"online"_s, m_options.online},
        {u"tileUrl"_s, m_options.tileUrl},
        {u"attribution"_s,
         u"&copy; <a href=\"https://www.openstreetmap.org/copyright\">OpenStreetMap</a> "
         "contributors"_s},
        {u"dark"_s, paletteIsDark(palette())},
    };
    emit m_bridge->settingsChanged(
        QString::fromUtf8(QJsonDocument(settings).toJson(QJsonDocument::Compact)));
}

bool MapWebView::event(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange
        || event->type() == QEvent::ThemeChange)
        sendSettings();
    return QWebEngineView::event(event);
}

void MapWebView::resizeEvent(QResizeEvent *event)
{
    QWebEngineView::resizeEvent(event);
    // Until the page reports its own size, the widget's stands in.
    if (!m_pageReady) {
        m_state.width = event->size().width();
        m_state.height = event->size().height();
    }
}
