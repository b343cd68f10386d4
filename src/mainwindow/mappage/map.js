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
    let sprites = new Map();
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
            const path = new Path2D();
            let minX = Infinity, minY = Infinity, maxX = -Infinity, maxY = -Infinity;
            for (const polygon of polygons) {
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
            }
            result.push({ path: path, minX: minX, minY: minY, maxX: maxX, maxY: maxY });
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
            const count = Math.pow(2, coords.z);
            // Copies of the world beside the first show the same shapes.
            const column = ((coords.x % count) + count) % count;
            const extent = 256 / count;
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

    // The outline of a balloon whose tip stands at (x, y): a circle of radius r centred at cy.
    function balloonPath(ctx, x, y, r, cy) {
        ctx.beginPath();
        ctx.moveTo(x, y);
        ctx.bezierCurveTo(x - r * 0.25, y - (y - cy) * 0.45, x - r, cy + r * 0.75, x - r, cy);
        ctx.arc(x, cy, r, Math.PI, 0, false);
        ctx.bezierCurveTo(x + r, cy + r * 0.75, x + r * 0.25, y - (y - cy) * 0.45, x, y);
        ctx.closePath();
    }

    function drawGlyph(ctx, glyph, cx, cy, tint) {
        ctx.save();
        ctx.strokeStyle = '#ffffff';
        ctx.fillStyle = '#ffffff';
        ctx.lineWidth = 1.4;
        ctx.lineJoin = 'round';
        ctx.lineCap = 'round';
        if (glyph === GLYPH_PHOTO || glyph === GLYPH_STACK) {
            const offset = glyph === GLYPH_STACK ? 1.6 : 0;
            if (glyph === GLYPH_STACK) {
                ctx.beginPath();
                ctx.moveTo(cx - 5.5, cy - 5.2);
                ctx.lineTo(cx + 7, cy - 5.2);
                ctx.lineTo(cx + 7, cy + 3.5);
                ctx.stroke();
            }
            const left = cx - 7 + (glyph === GLYPH_STACK ? -0.6 : 0);
            const top = cy - 4.5 + offset;
            const width = 13;
            const height = 9.5;
            ctx.beginPath();
            ctx.rect(left, top, width, height);
            ctx.stroke();
            // A hill and the sun.
            ctx.beginPath();
            ctx.moveTo(left + 1.5, top + height - 1.5);
            ctx.lineTo(left + 5, top + 4.5);
            ctx.lineTo(left + 8, top + 7.5);
            ctx.lineTo(left + 9.5, top + 6);
            ctx.lineTo(left + width - 1.5, top + height - 1.5);
            ctx.stroke();
            ctx.beginPath();
            ctx.arc(left + width - 3.2, top + 2.8, 1.3, 0, Math.PI * 2);
            ctx.fill();
        } else if (glyph === GLYPH_PIN) {
            ctx.beginPath();
            ctx.arc(cx, cy, 7.5, 0, Math.PI * 2);
            ctx.fill();
            ctx.fillStyle = tint;
            balloonPath(ctx, cx, cy + 5, 3.2, cy - 1.2);
            ctx.fill();
            ctx.fillStyle = '#ffffff';
            ctx.beginPath();
            ctx.arc(cx, cy - 1.2, 1.2, 0, Math.PI * 2);
            ctx.fill();
        } else {
            ctx.beginPath();
            ctx.arc(cx, cy, 2.6, 0, Math.PI * 2);
            ctx.fill();
        }
        ctx.restore();
    }

    // A marker drawn once per look into its own small canvas, then copied for every item.
    function sprite(kind, tint, glyph) {
        const key = kind + '/' + tint + '/' + glyph + '/' + (dark ? 'd' : 'l');
        let found = sprites.get(key);
        if (found)
            return found;
        const plain = kind === KIND_PLAIN;
        const width = plain ? PLAIN_WIDTH : BALLOON_WIDTH;
        const height = plain ? PLAIN_HEIGHT : BALLOON_HEIGHT;
        const ratio = pixelRatio();
        const image = document.createElement('canvas');
        image.width = Math.ceil(width * ratio);
        image.height = Math.ceil(height * ratio);
        const ctx = image.getContext('2d');
        ctx.scale(ratio, ratio);
        const colour = (dark ? TINTS.dark : TINTS.light)[tint] || '#808080';
        const x = width / 2;
        const y = height - 1;
        const r = plain ? 7.5 : 12.5;
        const cy = r + 1.2;
        ctx.shadowColor = 'rgba(0, 0, 0, 0.35)';
        ctx.shadowBlur = 2;
        ctx.shadowOffsetY = 0.5;
        balloonPath(ctx, x, y, r, cy);
        ctx.fillStyle = colour;
        ctx.fill();
        ctx.shadowColor = 'transparent';
        ctx.lineWidth = 1;
        ctx.strokeStyle = 'rgba(255, 255, 255, 0.9)';
        ctx.stroke();
        drawGlyph(ctx, plain ? 0 : glyph, x, cy, colour);
        found = { image: image, width: width, height: height };
        sprites.set(key, found);
        return found;
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

    function drawCount(count, x, y, tint) {
        const text = count > 9999 ? Math.round(count / 1000) + 'k' : String(count);
        context.font = '600 10px system-ui, Cantarell, "Noto Sans", sans-serif';
        const width = Math.max(16, context.measureText(text).width + 8);
        const left = x + 4;
        const top = y - BALLOON_HEIGHT - 2;
        context.beginPath();
        context.roundRect(left, top, width, 15, 7.5);
        context.fillStyle = '#ffffff';
        context.fill();
        context.lineWidth = 1;
        context.strokeStyle = (dark ? TINTS.dark : TINTS.light)[tint];
        context.stroke();
        context.fillStyle = '#1d1d1f';
        context.textAlign = 'center';
        context.textBaseline = 'middle';
        context.fillText(text, left + width / 2, top + 8);
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
            const look = sprite(item[0], item[3], item[4]);
            context.drawImage(look.image, point.x - look.width / 2, point.y - look.height + 1, look.width,
                look.height);
            if (item[0] === KIND_CLUSTER)
                drawCount(item[5], point.x, point.y, item[3]);
            else if (item[0] === KIND_PLAIN && labelled && (item[6] || item[7])) {
                if (item[6])
                    drawLabel(item[6], point.x, point.y + 2, true);
                if (item[7])
                    drawLabel(item[7], point.x, point.y + (item[6] ? 15 : 2), false);
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

    // ---- Talking to the application

    function reportView() {
        if (!bridge)
            return;
        const center = map.getCenter();
        const size = map.getSize();
        bridge.viewChanged(center.lat, center.lng, map.getZoom(), size.x, size.y);
    }

    function applySettings(settings) {
        dark = !!settings.dark;
        document.body.classList.toggle('dark', dark);
        sprites = new Map();
        offlineLayer.redraw();
        setTiles(!!settings.online, settings.tileUrl, settings.attribution);
        draw();
    }

    function showScene(text) {
        scene = JSON.parse(text);
        draw();
        const seq = scene.seq;
        afterPaint(() => bridge.painted(seq));
    }

    map.on('move', draw);
    map.on('resize', () => {
        resizeCanvas();
        draw();
    });
    // The canvas does not follow the zoom animation, so it stays empty until the zoom ends.
    map.on('zoomanim', () => {
        drawnDuringZoom = false;
        draw();
    });
    map.on('zoomend', () => {
        drawnDuringZoom = true;
        draw();
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
        bridge.viewRequested.connect((latitude, longitude, zoom, animated) => {
            map.setView([latitude, longitude], zoom, { animate: animated });
            if (!animated)
                draw();
        });
        if (baseLayer)
            bridge.baseLayerChanged(baseLayer);
        bridge.pageReady(map.getSize().x, map.getSize().y);
        reportView();
    });
})();
