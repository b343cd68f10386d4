// The map page: Leaflet draws the base layers and moves the camera; the application decides
// what stands on the map and sends it as a scene, which this page draws on one canvas. Clicks,
// camera moves and finished frames go back to the application through the web channel.
'use strict';

(function () {
    // Marker sizes, the same as the application's hit tests use.
    const BALLOON_WIDTH = 28;
    const BALLOON_HEIGHT = 38;
    const PLAIN_WIDTH = 18;
    const PLAIN_HEIGHT = 26;
    // Plain markers get their titles drawn only while few are in view.
    const LABELLED_PLAIN_LIMIT = 150;

    const KIND_PLAIN = 0;
    const KIND_CLUSTER = 2;
    const GLYPH_NONE = 0;
    const GLYPH_PHOTO = 1;
    const GLYPH_STACK = 2;
    const GLYPH_PIN = 3;

    // By tint: selected blue, unselected grey, partly orange, cluster grey, plain red.
    const TINTS = {
        light: ['#007aff', '#808080', '#ff9500', '#8e8e93', '#ff3b30'],
        dark: ['#0a84ff', '#808080', '#ff9f0a', '#98989d', '#ff453a'],
    };
    const BASE = {
        light: { land: '#f2efe9', border: '#b5aca2', label: '#1d1d1f', halo: 'rgba(255,255,255,0.9)' },
        dark: { land: '#2c3037', border: '#4d535c', label: '#f2f2f7', halo: 'rgba(0,0,0,0.8)' },
    };

    let bridge = null;
    let dark = false;
    let scene = { seq: 0, items: [] };
    let drawnDuringZoom = true;

    const map = L.map('map', {
        zoomControl: false,
        zoomSnap: 0,
        zoomDelta: 1,
        wheelPxPerZoomLevel: 90,
        minZoom: 1,
        maxZoom: 19,
        boxZoom: false,
        fadeAnimation: false,
        worldCopyJump: false,
    });
    map.attributionControl.setPrefix('<a href="https://leafletjs.com">Leaflet</a>');
    map.setView([30, 10], 2, { animate: false });

    // ---- Base layers

    // Country shapes shipped with the application: the map is never empty, with or without
    // tiles. They lie under the tiles and show wherever a tile did not load. Each shape becomes a
    // path once, in world points at zoom 0; a tile draws the shapes whose boxes meet it, scaled,
    // so nothing is projected again when the map zooms or moves.
    const shapes = (() => {
        const crs = map.options.crs;
        const world = topojson.feature(window.palometWorld, window.palometWorld.objects.countries);
        const result = [];
        for (const feature of world.features) {
            const geometry = feature.geometry;
            if (!geometry)
                continue;
            const polygons = geometry.type === 'Polygon' ? [geometry.coordinates] : geometry.coordinates;
            // One entry per polygon, not per country: a country's islands and far territories
            // would otherwise make every tile of the world walk its whole outline.
            for (const polygon of polygons) {
                const path = new Path2D();
                let minX = Infinity, minY = Infinity, maxX = -Infinity, maxY = -Infinity;
                for (const ring of polygon) {
                    ring.forEach((position, index) => {
                        const point = crs.latLngToPoint(L.latLng(position[1], position[0]), 0);
                        if (index === 0)
                            path.moveTo(point.x, point.y);
                        else
                            path.lineTo(point.x, point.y);
                        minX = Math.min(minX, point.x);
                        minY = Math.min(minY, point.y);
                        maxX = Math.max(maxX, point.x);
                        maxY = Math.max(maxY, point.y);
                    });
                    path.closePath();
                }
                result.push({ path: path, minX: minX, minY: minY, maxX: maxX, maxY: maxY });
            }
        }
        return result;
    })();

    // At fractional zooms tiles are scaled and their edges fall between pixels, which leaves
    // faint seams; each tile reaches two pixels into its neighbours to cover them.
    const TILE_OVERLAP = 2;
    const overlappingTiles = {
        _initTile(tile) {
            L.GridLayer.prototype._initTile.call(this, tile);
            const size = this.getTileSize();
            tile.style.width = size.x + TILE_OVERLAP + 'px';
            tile.style.height = size.y + TILE_OVERLAP + 'px';
        },
    };

    const CountryShapes = L.GridLayer.extend(overlappingTiles).extend({
        createTile(coords) {
            const size = this.getTileSize();
            const ratio = pixelRatio();
            const tile = document.createElement('canvas');
            // The overlap is drawn, not stretched: it shows what the neighbour shows there.
            tile.width = Math.round((size.x + TILE_OVERLAP) * ratio);
            tile.height = Math.round((size.y + TILE_OVERLAP) * ratio);
            // The tile's width in world points at zoom 0, and the tiles across the world.
            const extent = size.x / Math.pow(2, coords.z);
            const count = Math.max(1, Math.round(256 / extent));
            // Copies of the world beside the first show the same shapes.
            const column = ((coords.x % count) + count) % count;
            const left = column * extent;
            const top = coords.y * extent;
            const scale = (size.x / extent) * ratio;
            const context = tile.getContext('2d');
            const colours = dark ? BASE.dark : BASE.light;
            context.setTransform(scale, 0, 0, scale, -left * scale, -top * scale);
            context.fillStyle = colours.land;
            context.strokeStyle = colours.border;
            context.lineWidth = (0.8 * ratio) / scale;
            context.lineJoin = 'round';
            const margin = extent * 0.02;
            for (const shape of shapes) {
                if (shape.maxX < left - margin || shape.minX > left + extent + margin
                    || shape.maxY < top - margin || shape.minY > top + extent + margin)
                    continue;
                context.fill(shape.path);
                context.stroke(shape.path);
            }
            return tile;
        },
    });
    const offlineLayer = new CountryShapes({
        attribution: 'Country shapes: Natural Earth',
        // Every tile walks the whole outline of each polygon it meets, so fewer, larger tiles
        // cost less.
        tileSize: 512,
        zIndex: 0,
        keepBuffer: 2,
        maxZoom: 19,
    }).addTo(map);

    let tileLayer = null;
    let baseLayer = '';
    let tileLoadedSinceMove = false;

    function reportBaseLayer(name) {
        if (name === baseLayer)
            return;
        baseLayer = name;
        if (bridge)
            bridge.baseLayerChanged(name);
    }

    function setTiles(online, url, attribution) {
        if (tileLayer) {
            map.removeLayer(tileLayer);
            tileLayer = null;
        }
        if (!online || !url) {
            reportBaseLayer('offline');
            return;
        }
        tileLayer = L.tileLayer(url, { maxZoom: 19, attribution: attribution, keepBuffer: 2, zIndex: 1 });
        tileLayer.on('loading', () => { tileLoadedSinceMove = false; });
        tileLayer.on('tileload', () => {
            tileLoadedSinceMove = true;
            reportBaseLayer('tiles');
        });
        tileLayer.on('tileerror', () => {
            if (!tileLoadedSinceMove)
                reportBaseLayer('offline');
        });
        tileLayer.addTo(map);
    }

    // ---- Markers

    const container = map.getContainer();
    const canvas = L.DomUtil.create('canvas', 'palomet-markers', container);
    const context = canvas.getContext('2d');

    function pixelRatio() {
        return window.devicePixelRatio || 1;
    }

    function resizeCanvas() {
        const size = map.getSize();
        const ratio = pixelRatio();
        canvas.width = Math.round(size.x * ratio);
        canvas.height = Math.round(size.y * ratio);
        canvas.style.width = size.x + 'px';
        canvas.style.height = size.y + 'px';
    }

    // Markers are drawn as vector paths made once, each placed by the transform. Copying
    // small images with drawImage costs far more per marker in the page's software canvas.

    // The outline of a balloon with its tip at (0, tipY): a circle of radius r centred at cy.
    function balloonPath(path, tipY, r, cy) {
        const y = tipY;
        path.moveTo(0, y);
        path.bezierCurveTo(-r * 0.25, y - (y - cy) * 0.45, -r, cy + r * 0.75, -r, cy);
        path.arc(0, cy, r, Math.PI, 0, false);
        path.bezierCurveTo(r, cy + r * 0.75, r * 0.25, y - (y - cy) * 0.45, 0, y);
        path.closePath();
        return path;
    }

    function circle(path, x, y, r) {
        path.moveTo(x + r, y);
        path.arc(x, y, r, 0, Math.PI * 2);
        return path;
    }

    // A photo's frame with a hill (stroked) and the sun (filled), around (0, 0); the stack has
    // a second frame behind it.
    function photoGlyph(stack) {
        const lines = new Path2D();
        if (stack) {
            lines.moveTo(-5.5, -5.2);
            lines.lineTo(7, -5.2);
            lines.lineTo(7, 3.5);
        }
        const left = -7 + (stack ? -0.6 : 0);
        const top = -4.5 + (stack ? 1.6 : 0);
        const width = 13;
        const height = 9.5;
        lines.rect(left, top, width, height);
        lines.moveTo(left + 1.5, top + height - 1.5);
        lines.lineTo(left + 5, top + 4.5);
        lines.lineTo(left + 8, top + 7.5);
        lines.lineTo(left + 9.5, top + 6);
        lines.lineTo(left + width - 1.5, top + height - 1.5);
        return { lines: lines, fill: circle(new Path2D(), left + width - 3.2, top + 2.8, 1.3) };
    }

    // The shapes of each kind of marker, the tip at (0, 0).
    const SHAPES = (() => {
        const big = (BALLOON_HEIGHT - 1) - (12.5 + 1.2);
        const small = (PLAIN_HEIGHT - 1) - (7.5 + 1.2);
        return {
            balloon: balloonPath(new Path2D(), 0, 12.5, -big),
            balloonShadow: balloonPath(new Path2D(), 0.8, 12.5, 0.8 - big),
            balloonCentre: -big,
            plain: balloonPath(new Path2D(), 0, 7.5, -small),
            plainShadow: balloonPath(new Path2D(), 0.8, 7.5, 0.8 - small),
            plainCentre: -small,
            plainDot: circle(new Path2D(), 0, 0, 2.6),
            photo: photoGlyph(false),
            stack: photoGlyph(true),
            pinDisc: circle(new Path2D(), 0, 0, 7.5),
            pinHead: balloonPath(new Path2D(), 5, 3.2, -1.2),
            pinDot: circle(new Path2D(), 0, -1.2, 1.2),
        };
    })();

    function tintColour(tint) {
        return (dark ? TINTS.dark : TINTS.light)[tint] || '#808080';
    }

    // One marker with its tip at (x, y) of the view.
    function drawMarker(kind, tint, glyph, x, y) {
        const ratio = pixelRatio();
        const colour = tintColour(tint);
        const plain = kind === KIND_PLAIN;
        context.setTransform(ratio, 0, 0, ratio, x * ratio, y * ratio);
        context.fillStyle = 'rgba(0, 0, 0, 0.22)';
        context.fill(plain ? SHAPES.plainShadow : SHAPES.balloonShadow);
        context.fillStyle = colour;
        context.fill(plain ? SHAPES.plain : SHAPES.balloon);
        context.lineWidth = 1;
        context.strokeStyle = 'rgba(255, 255, 255, 0.9)';
        context.stroke(plain ? SHAPES.plain : SHAPES.balloon);
        context.translate(0, plain ? SHAPES.plainCentre : SHAPES.balloonCentre);
        context.fillStyle = '#ffffff';
        if (plain || glyph === GLYPH_NONE) {
            context.fill(SHAPES.plainDot);
        } else if (glyph === GLYPH_PIN) {
            context.fill(SHAPES.pinDisc);
            context.fillStyle = colour;
            context.fill(SHAPES.pinHead);
            context.fillStyle = '#ffffff';
            context.fill(SHAPES.pinDot);
        } else {
            const photo = glyph === GLYPH_STACK ? SHAPES.stack : SHAPES.photo;
            context.lineWidth = 1.4;
            context.strokeStyle = '#ffffff';
            context.stroke(photo.lines);
            context.fill(photo.fill);
        }
    }

    function drawLabel(text, x, y, bold) {
        const colours = dark ? BASE.dark : BASE.light;
        context.font = (bold ? '600 ' : '') + '11px system-ui, Cantarell, "Noto Sans", sans-serif';
        context.textAlign = 'center';
        context.textBaseline = 'top';
        context.lineWidth = 3;
        context.strokeStyle = colours.halo;
        context.strokeText(text, x, y);
        context.fillStyle = colours.label;
        context.fillText(text, x, y);
    }

    // A cluster's count in a small white badge beside the balloon's head.
    const COUNT_FONT = '600 10px system-ui, Cantarell, "Noto Sans", sans-serif';
    const badgeWidths = new Map();
    function drawCount(count, x, y, tint) {
        const text = count > 9999 ? Math.round(count / 1000) + 'k' : String(count);
        const ratio = pixelRatio();
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        context.font = COUNT_FONT;
        let width = badgeWidths.get(text);
        if (width === undefined) {
            width = Math.max(16, context.measureText(text).width + 8);
            badgeWidths.set(text, width);
        }
        const left = x + 4;
        const top = y - BALLOON_HEIGHT - 2;
        context.beginPath();
        context.roundRect(left, top, width, 15, 7.5);
        context.fillStyle = '#ffffff';
        context.fill();
        context.lineWidth = 1;
        context.strokeStyle = tintColour(tint);
        context.stroke();
        context.fillStyle = '#1d1d1f';
        context.textAlign = 'center';
        context.textBaseline = 'middle';
        context.fillText(text, left + width / 2, top + 8);
    }

    // Many events ask for a drawing within one frame (a step moves, zooms and brings a scene);
    // the frame draws once, before it is painted.
    let drawRequested = false;
    function requestDraw() {
        if (drawRequested)
            return;
        drawRequested = true;
        requestAnimationFrame(() => {
            drawRequested = false;
            draw();
        });
    }

    function draw() {
        const ratio = pixelRatio();
        context.setTransform(1, 0, 0, 1, 0, 0);
        context.clearRect(0, 0, canvas.width, canvas.height);
        if (!drawnDuringZoom)
            return;
        context.setTransform(ratio, 0, 0, ratio, 0, 0);
        const size = map.getSize();
        const items = scene.items;
        let plainCount = 0;
        for (const item of items) {
            if (item[0] === KIND_PLAIN)
                ++plainCount;
        }
        const labelled = plainCount <= LABELLED_PLAIN_LIMIT;
        for (const item of items) {
            const point = map.latLngToContainerPoint([item[1], item[2]]);
            if (point.x < -40 || point.y < -10 || point.x > size.x + 40 || point.y > size.y + 60)
                continue;
            drawMarker(item[0], item[3], item[4], point.x, point.y);
            if (item[0] === KIND_CLUSTER)
                drawCount(item[5], point.x, point.y, item[3]);
            else if (item[0] === KIND_PLAIN && labelled && item[6]) {
                // The title (the place's city) only: the subtitle is the file's sorting name,
                // whose padded numbers are no text to show, and side by side they cover the map.
                context.setTransform(ratio, 0, 0, ratio, 0, 0);
                drawLabel(item[6], point.x, point.y + 2, true);
            }
        }
    }

    // The topmost marker under a point of the view, for the pointer's shape only: what a click
    // means is decided by the application.
    function markerAt(x, y) {
        for (let i = scene.items.length - 1; i >= 0; --i) {
            const item = scene.items[i];
            const plain = item[0] === KIND_PLAIN;
            const width = plain ? PLAIN_WIDTH : BALLOON_WIDTH;
            const height = plain ? PLAIN_HEIGHT : BALLOON_HEIGHT;
            const point = map.latLngToContainerPoint([item[1], item[2]]);
            if (!plain && x >= point.x - width / 2 && x <= point.x + width / 2 && y >= point.y - height
                && y <= point.y)
                return item;
        }
        return null;
    }

    // Runs the block once the frame that shows the latest drawing has been handed to the screen.
    function afterPaint(block) {
        requestAnimationFrame(() => setTimeout(block, 0));
    }

    // ---- A track and where files land on it (the geotag dialog's map)

    // Drawn by Leaflet on a canvas of their own under the markers' canvas; only the landing
    // points take the mouse, for their tool tips, and their clicks go on to the map's.
    const overlayRenderer = L.canvas({ padding: 0.5 });
    const trackLayer = L.layerGroup().addTo(map);
    const landingLayer = L.layerGroup().addTo(map);
    let trackLines = [];
    let landingMarkers = [];
    let highlightedLanding = -1;

    function trackStyle() {
        return {
            renderer: overlayRenderer,
            color: dark ? '#ff453a' : '#e0302a',
            weight: 3,
            opacity: 0.9,
            lineJoin: 'round',
            interactive: false,
        };
    }

    function landingStyle(highlighted) {
        const colours = dark ? TINTS.dark : TINTS.light;
        return {
            renderer: overlayRenderer,
            radius: highlighted ? 8 : 5,
            color: highlighted ? '#ffffff' : (dark ? '#1c1c1e' : '#ffffff'),
            weight: highlighted ? 2.5 : 1.5,
            fillColor: highlighted ? colours[0] : colours[2],
            fillOpacity: 1,
            bubblingMouseEvents: true,
        };
    }

    function showTrack(text) {
        trackLayer.clearLayers();
        trackLines = JSON.parse(text).map((segment) => L.polyline(segment, trackStyle()).addTo(trackLayer));
    }

    function tooltipContent(name, taken) {
        const content = document.createElement('div');
        const title = document.createElement('strong');
        title.textContent = name;
        content.appendChild(title);
        if (taken) {
            content.appendChild(document.createElement('br'));
            content.appendChild(document.createTextNode(taken));
        }
        return content;
    }

    function showLandings(text) {
        landingLayer.clearLayers();
        landingMarkers = JSON.parse(text).map((entry, index) => {
            const marker = L.circleMarker([entry[0], entry[1]], landingStyle(index === highlightedLanding));
            marker.palometTitle = entry[2];
            marker.bindTooltip(tooltipContent(entry[2], entry[3]), { direction: 'top', offset: [0, -6] });
            return marker.addTo(landingLayer);
        });
        if (landingMarkers[highlightedLanding])
            landingMarkers[highlightedLanding].bringToFront();
    }

    function highlightLanding(index) {
        const previous = landingMarkers[highlightedLanding];
        if (previous)
            previous.setStyle(landingStyle(false));
        highlightedLanding = index;
        const current = landingMarkers[index];
        if (current) {
            current.setStyle(landingStyle(true));
            current.bringToFront();
        }
    }

    function restyleOverlays() {
        for (const line of trackLines)
            line.setStyle(trackStyle());
        landingMarkers.forEach((marker, index) => marker.setStyle(landingStyle(index === highlightedLanding)));
    }

    // The levels of every zoom animation started and of every zoom ended, in order: the tests
    // tell a lost request by them.
    const zoomStarts = [];
    const zoomEnds = [];
    map.on('zoomanim', (event) => zoomStarts.push(event.zoom));
    map.on('zoomend', () => zoomEnds.push(map.getZoom()));

    // What the overlays hold, for the application's tests: each line's number of vertices,
    // each landing point's place, the highlighted one and its radius, and the zoom levels.
    window.palometOverlays = () => ({
        segments: trackLines.map((line) => line.getLatLngs().length),
        landings: landingMarkers.map((marker) => [marker.getLatLng().lat, marker.getLatLng().lng, marker.palometTitle]),
        highlighted: highlightedLanding,
        highlightedRadius: landingMarkers[highlightedLanding] ? landingMarkers[highlightedLanding].getRadius() : 0,
        zoomStarts: zoomStarts,
        zoomEnds: zoomEnds,
    });

    // ---- Talking to the application

    // Leaflet ignores a zoom asked for while a zoom animation runs (its own _animatingZoom is
    // what it checks), so a quick second click on a zoom button would be lost: the newest
    // request waits for the animation's end. The view is not reported meanwhile, so that the
    // application never takes a passing state for the one it asked for.
    let waitingView = null;
    const zoomAnimating = () => !!map._animatingZoom;
    // The number of the last view request taken: each report carries it, so that the
    // application can tell a report sent before its newest request from one sent after.
    let viewRequest = 0;

    function requestView(latitude, longitude, zoom, animated, request) {
        viewRequest = Math.max(viewRequest, request);
        if (zoomAnimating()) {
            waitingView = [latitude, longitude, zoom, animated, request];
            return;
        }
        map.setView([latitude, longitude], zoom, { animate: animated });
        if (!animated)
            requestDraw();
    }

    map.on('zoomend', () => {
        const view = waitingView;
        waitingView = null;
        if (view)
            requestView(...view);
    });

    function reportView() {
        if (!bridge || zoomAnimating() || waitingView)
            return;
        const center = map.getCenter();
        const size = map.getSize();
        bridge.viewChanged(center.lat, center.lng, map.getZoom(), size.x, size.y, viewRequest);
    }

    function applySettings(settings) {
        dark = !!settings.dark;
        document.body.classList.toggle('dark', dark);
        offlineLayer.redraw();
        setTiles(!!settings.online, settings.tileUrl, settings.attribution);
        restyleOverlays();
        requestDraw();
    }

    function showScene(text) {
        scene = JSON.parse(text);
        requestDraw();
        const seq = scene.seq;
        afterPaint(() => bridge.painted(seq));
    }

    map.on('move', requestDraw);
    map.on('resize', () => {
        resizeCanvas();
        requestDraw();
    });
    // The canvas does not follow the zoom animation, so it stays empty until the zoom ends.
    map.on('zoomanim', () => {
        drawnDuringZoom = false;
        requestDraw();
    });
    map.on('zoomend', () => {
        drawnDuringZoom = true;
        requestDraw();
    });
    map.on('moveend', reportView);
    map.on('resize', reportView);
    map.on('click', (event) => {
        if (bridge)
            bridge.clicked(event.containerPoint.x, event.containerPoint.y);
    });
    map.on('mousemove', (event) => {
        const over = markerAt(event.containerPoint.x, event.containerPoint.y) !== null;
        container.classList.toggle('palomet-hovering', over);
    });
    resizeCanvas();

    new QWebChannel(qt.webChannelTransport, (channel) => {
        bridge = channel.objects.palomet;
        bridge.settingsChanged.connect((text) => applySettings(JSON.parse(text)));
        bridge.sceneChanged.connect(showScene);
        bridge.trackChanged.connect(showTrack);
        bridge.landingsChanged.connect(showLandings);
        bridge.landingHighlighted.connect(highlightLanding);
        bridge.placingChanged.connect((placing) => container.classList.toggle('palomet-placing', placing));
        bridge.viewRequested.connect(requestView);
        if (baseLayer)
            bridge.baseLayerChanged(baseLayer);
        bridge.pageReady(map.getSize().x, map.getSize().y);
        reportView();
    });
})();
