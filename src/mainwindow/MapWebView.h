#pragma once

#include "map/GeotagMapContent.h"
#include "map/MapView.h"

#include <QString>
#include <QWebEngineView>

class MapDelegate;
class MapPageBridge;
class QWebEngineProfile;

// The map as the user sees it: a web page with Leaflet, loaded from the resource folder with no
// network, that draws the scene MapDelegate makes and reports the camera and the clicks through
// a web channel. The base map is OpenStreetMap's tiles when the map is online, over country
// shapes that show wherever tiles do not load; offline the page makes no request at all.
// Without a delegate the page is a small map of its own (the geotag dialog's): it draws a track
// and landing points and reports clicks as signals.
class MapWebView
    : public QWebEngineView
    , public MapView
{
    Q_OBJECT

public:
    struct Options
    {
        bool online = true;
        // Where the tile cache lives; empty: the user's cache folder.
        QString cacheDirectory;
        QString tileUrl = QStringLiteral("https://tile.openstreetmap.org/{z}/{x}/{y}.png");
    };

    explicit MapWebView(MapDelegate &delegate, Options options, QWidget *parent = nullptr);
    explicit MapWebView(Options options, QWidget *parent = nullptr);
    ~MapWebView() override;

    // Before the application object exists: QtWebEngine's sandbox cannot run as root, so it is
    // switched off then, with one line in the log.
    static void prepareProcess();
    // The user-defaults key of the online setting; tiles are fetched while it is true.
    static QString onlineSettingKey();
    static bool onlineSetting();

    MapViewState viewState() const override { return m_state; }
    void setViewState(const MapViewState &state, bool animated) override;
    void showScene(const MapScene &scene) override;

    void setOnline(bool online);
    bool isOnline() const { return m_options.online; }
    bool isPageReady() const { return m_pageReady; }
    // The last scene the page has drawn and shown.
    quint64 paintedSequence() const { return m_paintedSequence; }
    // "tiles" or "offline": what the page shows under the markers.
    QString baseLayer() const { return m_baseLayer; }

    static QString sceneJson(const MapScene &scene);

    // A track as lines, one per segment, under everything else; empty to remove it.
    void showTrack(const QList<QList<Coordinate2D>> &segments);
    // Small round markers over the track, with the file's name and time as their tool tip.
    void showLandings(const QList<GeotagMapContent::Landing> &landings);
    // The landing point drawn larger and in the selection's colour; -1 for none.
    void highlightLanding(int index);
    // Where the mouse turns into a cross: while the next click places something.
    void setPlacingCursor(bool placing);

signals:
    void pageReady();
    // A click on the map, in points of the view.
    void clicked(QPointF point);
    void scenePainted(quint64 sequence);
    void baseLayerChanged(const QString &name);

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void sendSettings();
    // Asks the page for m_state's camera.
    void requestView(bool animated);
    void sendOverlays();

    MapDelegate *m_delegate = nullptr;
    Options m_options;
    MapPageBridge *m_bridge;
    MapViewState m_state;
    // The number of the last view request sent to the page.
    quint64 m_viewRequest = 0;
    bool m_pageReady = false;
    quint64 m_paintedSequence = 0;
    QString m_baseLayer;
    QString m_pendingScene;
    QString m_trackJson, m_landingsJson;
    int m_highlightedLanding = -1;
};
