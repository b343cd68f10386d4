#pragma once

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

signals:
    void pageReady();
    void scenePainted(quint64 sequence);
    void baseLayerChanged(const QString &name);

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void sendSettings();
    QWebEngineProfile *profile();

    MapDelegate &m_delegate;
    Options m_options;
    MapPageBridge *m_bridge;
    MapViewState m_state;
    bool m_pageReady = false;
    quint64 m_paintedSequence = 0;
    QString m_baseLayer;
    QString m_pendingScene;
};
