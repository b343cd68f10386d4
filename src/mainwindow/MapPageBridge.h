#pragma once

#include <QObject>
#include <QString>

// The object the map page reaches through the web channel, as "palomet". Signals carry what the
// application sends to the page; the invokable methods are what the page reports. Main thread.
class MapPageBridge : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    Q_INVOKABLE void pageReady(double width, double height) { emit pageDidLoad(width, height); }
    // request: the last view request the page had taken when it reported.
    Q_INVOKABLE void viewChanged(double latitude, double longitude, double zoom, double width,
                                 double height, double request)
    {
        emit viewDidChange(latitude, longitude, zoom, width, height, quint64(request));
    }
    Q_INVOKABLE void clicked(double x, double y) { emit pageClicked(x, y); }
    Q_INVOKABLE void painted(double sequence) { emit scenePainted(quint64(sequence)); }
    Q_INVOKABLE void baseLayerChanged(const QString &name) { emit baseLayerDidChange(name); }

signals:
    // To the page.
    void settingsChanged(const QString &json);
    void sceneChanged(const QString &json);
    // Numbered, so that a report the page sent before it took the request can be told.
    void viewRequested(double latitude, double longitude, double zoom, bool animated,
                       double request);
    // A track's lines, [[[lat, lon], ...], ...], and the landing points over them,
    // [[lat, lon, name, taken], ...], of which one may be highlighted (-1 for none).
    void trackChanged(const QString &json);
    void landingsChanged(const QString &json);
    void landingHighlighted(int index);
    void placingChanged(bool placing);

    // From the page.
    void pageDidLoad(double width, double height);
    void viewDidChange(double latitude, double longitude, double zoom, double width, double height,
                       quint64 request);
    void pageClicked(double x, double y);
    void scenePainted(quint64 sequence);
    void baseLayerDidChange(const QString &name);
};
