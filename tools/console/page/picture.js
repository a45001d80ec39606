// The camera's picture with the shapes on it. Draws what it is given, and tells what hand or key wants.

import { inFrame, isUnset } from './model.js';

const SVG = 'http://www.w3.org/2000/svg';
const ARROWS = { ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, -1], ArrowDown: [0, 1] };
const FAR = { mouse: 2, pen: 4, touch: 6 }; // a hand isn't still: pixels before a press is a drag

function make(name, parent, attributes = {}) {
    const element = document.createElementNS(SVG, name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    parent.append(element);
    return element;
}

function assign(element, attributes) {
    for (const [key, value] of Object.entries(attributes))
        if (value === null) element.removeAttribute(key);
        else if (element.getAttribute(key) !== String(value)) element.setAttribute(key, value);
}

export const stepOf = event => {
    const arrow = event.ctrlKey || event.altKey || event.metaKey ? null : ARROWS[event.key];
    return arrow ? arrow.map(value => value * (event.shiftKey ? 10 : 1)) : null;
};

// The corners that are drawn: a box has two of four.
function outline(shape) {
    if (shape.kind !== 'box') return shape.points;
    const [[x1, y1], [x2, y2]] = shape.points;
    return [[x1, y1], [x2, y1], [x2, y2], [x1, y2]];
}

function middle(points) {
    const sum = points.reduce(([a, b], [x, y]) => [a + x, b + y], [0, 0]);
    return sum.map(value => value / points.length);
}

// `on` has: select(key, vertex), drag(key, vertex, point or step, begun), dragged(), giveUp(), move(key, vertex, step),
// remove(key, vertex), draw(point), close(), cross(step).
export class Picture {
    constructor(svg, on) {
        this.svg = svg;
        this.on = on;
        this.image = make('image', svg, { 'aria-hidden': 'true', preserveAspectRatio: 'none', x: 0, y: 0 });
        this.grid = make('path', svg, { class: 'grid', 'aria-hidden': 'true' });
        this.layer = make('g', svg);
        this.draft = this.makeShape('draft');
        svg.append(this.draft.group);
        this.cross = make('g', svg, { class: 'cross', role: 'button', tabindex: 0, 'aria-label': 'Crosshair' });
        make('path', this.cross, { d: 'M-1 0H1M0 -1V1' });
        this.nodes = new Map();
        this.listen();
        new ResizeObserver(() => this.measure()).observe(svg);
    }

    show(url) {
        this.hasImage = url !== null;
        if (url) this.image.setAttribute('href', url);
        else this.image.removeAttribute('href');
    }

    // Handles and lettering keep their size on the screen.
    measure() {
        const width = this.svg.getBoundingClientRect().width;
        if (width && this.view) this.svg.style.setProperty('--u', this.view.frame[0] / width);
    }

    pointAt(event) {
        const box = this.svg.getBoundingClientRect();
        const [width, height] = this.view.frame;
        return [(event.clientX - box.left) * width / box.width, (event.clientY - box.top) * height / box.height];
    }

    // ---- drawing ------------------------------------------------------------------------------

    render(view) {
        const [width, height] = view.frame;
        const resized = String(this.view?.frame) !== String(view.frame);
        this.view = view;
        if (resized) {
            this.svg.setAttribute('viewBox', `0 0 ${width} ${height}`);
            assign(this.image, { width, height });
            this.svg.style.setProperty('--w', width);
            this.svg.style.setProperty('--h', height);
            const lines = n => Array.from({ length: 7 }, (_, i) => Math.round(n * (i + 1) / 8));
            this.grid.setAttribute('d', lines(width).map(x => `M${x} 0V${height}`).join('') +
                lines(height).map(y => `M0 ${y}H${width}`).join(''));
            this.measure();
        }
        this.svg.classList.toggle('drawing', !!view.drawing);
        this.grid.classList.toggle('faint', !!this.hasImage);
        this.renderShapes(view);
        this.renderDraft(view);
    }

    renderShapes({ shapes, selected, vertex, wrong }) {
        for (const [key, node] of this.nodes)
            if (!shapes.some(shape => shape.key === key)) {
                node.group.remove();
                this.nodes.delete(key);
            }
        for (const shape of shapes) {
            let node = this.nodes.get(shape.key);
            if (!node) {
                node = this.makeShape(shape.key);
                this.nodes.set(shape.key, node);
                this.layer.append(node.group);
            }
            this.renderShape(node, shape, shape.key === selected, vertex, wrong.has(shape.key));
        }
        this.raise(selected);
    }

    makeShape(key) {
        const group = make('g', this.layer, { role: 'group', tabindex: 0, 'data-key': key });
        const area = make('polygon', group, { class: 'area', 'aria-hidden': 'true' });
        const arrow = make('path', group, { class: 'arrow', 'aria-hidden': 'true', d: 'M0 14V-14M-6 -7L0 -14L6 -7' });
        const label = make('text', group, { class: 'label', 'aria-hidden': 'true' });
        return { group, area, arrow, label, handles: [] };
    }

    renderShape(node, shape, chosen, vertex, wrong) {
        const { group, area, arrow, label } = node;
        const corners = outline(shape);
        assign(group, { 'aria-label': shape.title, class: `shape ${shape.kind}${chosen ? ' chosen' : ''}${wrong ? ' wrong' : ''}` +
            (isUnset(shape) ? ' unset' : '') + (corners.length === 2 ? ' two' : '') });
        assign(area, { points: corners.map(point => point.join(',')).join(' ') });
        const lettered = corners.length > 0 && !isUnset(shape);
        label.textContent = lettered ? shape.name : '';
        if (lettered) {
            const [x, y] = corners.reduce((a, b) => (b[1] < a[1] ? b : a));
            const [inX, inY] = inFrame([x, y], this.view.frame);
            assign(label, { x: inX, y: inY, 'text-anchor': inX > this.view.frame[0] * 0.75 ? 'end' : 'start' });
        }
        const turned = lettered && shape.direction >= 0 && shape.direction < 8;
        assign(arrow, { hidden: turned ? null : '' });
        if (turned) {
            const [x, y] = middle(corners);
            arrow.style.transform = `translate(${x}px, ${y}px) scale(var(--u)) rotate(${shape.direction * 45}deg)`;
        }
        this.renderHandles(node, shape, chosen, vertex);
    }

    renderHandles({ group, handles }, shape, chosen, vertex) {
        while (handles.length > shape.points.length) handles.pop().remove();
        while (handles.length < shape.points.length) {
            const handle = make('g', group, { role: 'button', tabindex: 0, 'data-vertex': handles.length });
            make('circle', handle, { class: 'hit' });
            make('circle', handle, { class: 'dot' });
            handles.push(handle);
        }
        shape.points.forEach((point, i) => {
            // What lies beyond the frame is held at its edge, where it can be taken hold of.
            const [x, y] = inFrame(point, this.view.frame);
            const beyond = x !== point[0] || y !== point[1];
            assign(handles[i], {
                'aria-label': `${shape.name}, point ${i + 1}`, transform: `translate(${x} ${y})`,
                class: `handle${chosen && vertex === i ? ' current' : ''}${beyond ? ' beyond' : ''}`,
            });
        });
    }

    renderDraft({ drawing }) {
        const { group, area } = this.draft;
        assign(group, { hidden: drawing ? null : '' });
        if (!drawing) this.cross.remove();
        else if (!this.cross.isConnected) this.svg.append(this.cross);
        if (!drawing) return this.renderHandles(this.draft, { points: [] });
        this.renderShape(this.draft, { kind: drawing.kind, title: drawing.title, name: drawing.title, points: drawing.points }, true, null, false);
        assign(this.cross, { transform: `translate(${drawing.cross.join(' ')})` });
        area.classList.toggle('open', true);
    }

    // The chosen shape lies on top. The others are moved: what is moved loses the focus.
    raise(selected) {
        const top = this.nodes.get(selected)?.group;
        for (let next = top?.nextElementSibling; next; next = top.nextElementSibling) this.layer.insertBefore(next, top);
    }

    focus(key, vertex = null) {
        const node = key === 'draft' ? this.draft : this.nodes.get(key);
        (vertex === null ? node?.group : node?.handles[Math.min(vertex, node.handles.length - 1)] ?? node?.group)?.focus();
    }

    // ---- hands and keys -------------------------------------------------------------------------

    targetOf(event) {
        const group = event.target.closest?.('[data-key]');
        if (!group || group === this.draft.group) return null;
        const handle = event.target.closest('[data-vertex]');
        return { key: group.dataset.key, vertex: handle ? Number(handle.dataset.vertex) : null, element: handle ?? group };
    }

    listen() {
        const { svg } = this;
        svg.addEventListener('focusin', event => {
            const target = this.targetOf(event);
            if (target) this.on.select(target.key, target.vertex);
        });
        svg.addEventListener('pointerdown', event => this.press(event));
        svg.addEventListener('pointermove', event => this.pull(event));
        svg.addEventListener('pointerup', event => this.release(event, false));
        svg.addEventListener('pointercancel', event => this.release(event, true));
        // A finger on a shape moves it, and not the page.
        svg.addEventListener('touchstart', event => {
            if (!this.view.drawing && this.targetOf(event)) event.preventDefault();
        }, { passive: false });
        svg.addEventListener('click', event => this.click(event));
        svg.addEventListener('keydown', event => this.key(event));
    }

    press(event) {
        const target = this.targetOf(event);
        if (this.view.drawing || !target || event.button !== 0 || !event.isPrimary) return;
        event.preventDefault();
        target.element.focus();
        svgCapture(this.svg, event.pointerId);
        const shape = this.view.shapes.find(one => one.key === target.key);
        this.held = { ...target, from: this.pointAt(event), pointer: event.pointerId, x: event.clientX, y: event.clientY,
            start: shape, far: FAR[event.pointerType] ?? 2, begun: false };
    }

    pull(event) {
        const { held } = this;
        if (!held || held.pointer !== event.pointerId) return;
        if (!held.begun && Math.hypot(event.clientX - held.x, event.clientY - held.y) < held.far) return;
        held.begun = true;
        const now = this.pointAt(event);
        const step = [now[0] - held.from[0], now[1] - held.from[1]];
        if (held.vertex === null) return this.on.dragShape(held.start, step);
        const start = inFrame(held.start.points[held.vertex], this.view.frame);
        this.on.dragPoint(held.start, held.vertex, inFrame([start[0] + step[0], start[1] + step[1]], this.view.frame));
    }

    release(event, cancelled) {
        const { held } = this;
        if (!held || held.pointer !== event.pointerId) return;
        this.held = null;
        if (held.begun) this.on.dragged(cancelled);
    }

    click(event) {
        if (!this.view.drawing) return;
        const first = event.target.closest?.('[data-vertex]');
        if (first && this.draft.group.contains(first) && first.dataset.vertex === '0') this.on.close();
        else this.on.draw(inFrame(this.pointAt(event), this.view.frame));
    }

    key(event) {
        if (this.view.drawing) return this.drawingKey(event);
        const target = this.targetOf(event);
        if (!target) return;
        const step = stepOf(event);
        if (step) this.on.move(target.key, target.vertex, step);
        else if (event.key === 'Delete') this.on.remove(target.key, target.vertex);
        else return;
        event.preventDefault();
    }

    drawingKey(event) {
        const step = stepOf(event);
        const onFirst = this.draft.handles[0] === event.target;
        if (step) this.on.cross(step);
        else if (event.key === 'Enter' && onFirst) this.on.close();
        else if (event.key === 'Enter') this.on.drawAtCross();
        else return;
        event.preventDefault();
    }
}

// A pointer that a test or a pen has made up can't be captured, and needn't be.
function svgCapture(svg, pointer) {
    try {
        svg.setPointerCapture(pointer);
    } catch {
        // It goes on without.
    }
}
