// The fields of a document and the table of a shape's points, as controls that are kept from one drawing to the next.

import { equal, get } from './model.js';

export function element(name, attributes = {}, ...children) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes))
        if (key === 'class') made.className = value;
        else if (key.startsWith('on')) made.addEventListener(key.slice(2), value);
        else if (value !== false && value !== null && value !== undefined) made.setAttribute(key, value === true ? '' : value);
    made.append(...children);
    return made;
}

// A number as such; anything else stays as it was typed, for the program to judge.
export const parsed = text => (/^\s*[+-]?\d{1,15}\s*$/.test(text) ? Number(text) : text);


// The fields of a document, or of a zone with `inside` "rois/".
export function fieldsOf(model, inside = '') {
    // A scene's name is the profile's, which is renamed as a whole.
    return model.filter(({ field }) => field.startsWith(inside) && (inside || !(field.startsWith('rois/') || field === 'name')));
}

let made = 0;

class Control {
    constructor(field, path, on) {
        const id = `field-${++made}`;
        this.path = path;
        this.on = on;
        this.flag = field.type === 'flag';
        this.text = field.type === 'text';
        this.choices = field.choices?.map((text, value) => [value, text]);
        const note = this.choices || this.flag ? '' : field.advice;
        const attributes = { id, 'aria-describedby': `${id}-note ${id}-finding`, title: field.meaning ?? '' };
        if (this.choices) this.input = element('select', attributes);
        else if (this.text) this.input = element('input', { ...attributes, type: 'text', dir: 'auto', autocomplete: 'off' });
        else this.input = element('input', { ...attributes, type: this.flag ? 'checkbox' : 'number', step: this.flag ? null : 1 });
        this.finding = element('span', { id: `${id}-finding`, class: 'finding' });
        this.row = element('div', { class: this.flag ? 'field flag' : 'field' }, element('label', { for: id }, field.label), this.input,
            element('span', { id: `${id}-note`, class: 'note' }, note), this.finding);
        this.input.addEventListener('input', () => on.input(this.path(), this.value()));
        this.input.addEventListener('change', () => on.seal());
        this.input.addEventListener('blur', () => on.seal());
    }

    value() {
        if (this.flag) return this.input.checked ? 1 : 0;
        return this.text ? this.input.value : parsed(this.input.value);
    }

    offer(value) {
        const offered = [...this.choices];
        if (!offered.some(([one]) => one === value)) offered.push([value, `${value}`]);
        if (this.input.options.length !== offered.length)
            this.input.replaceChildren(...offered.map(([one, text]) => element('option', { value: one }, text)));
    }

    // What a person is typing stays as it is typed.
    show(value, findings) {
        if (this.choices) this.offer(value);
        if (this.flag) this.input.checked = Number(value) !== 0;
        else if (!equal(this.value(), value)) this.input.value = value ?? '';
        const found = findings.get(`/${this.path()}`) ?? [];
        this.finding.textContent = found.map(({ text }) => text).join(' ');
        this.finding.classList.toggle('error', found.some(({ level }) => level === 'error'));
        this.input.toggleAttribute('aria-invalid', false);
        if (found.some(({ level }) => level === 'error')) this.input.setAttribute('aria-invalid', 'true');
    }
}

// A group of fields. `prefix()` is where they stand in the document.
export class Fields {
    constructor(host, on) {
        this.host = host;
        this.on = on;
        this.controls = [];
    }

    build(fields, inside = '', prefix = () => '') {
        this.controls = fields.map(field => new Control(field, () => prefix() + field.field.slice(inside.length), this.on));
        this.host.replaceChildren(...this.controls.map(control => control.row));
    }

    show(doc, findings) {
        for (const control of this.controls) control.show(get(doc, control.path()), findings);
    }
}

// The table of points. `on` has: point(index, axis, value), seal(), select(index), last().
export class PointsTable {
    constructor(body, on) {
        this.body = body;
        this.on = on;
        this.rows = [];
    }

    row(index) {
        const inputs = ['x', 'y'].map((axis, i) => element('input', {
            type: 'number', step: 1, 'aria-label': `${axis} of point ${index + 1}`, 'aria-describedby': `point-finding-${index}`,
            oninput: event => this.on.point(index, i, parsed(event.target.value)),
            onchange: () => this.on.seal(), onblur: () => this.on.seal(), onfocus: () => this.on.select(index),
            onkeydown: event => {
                if (event.key !== 'Enter' || i !== 1) return;
                event.preventDefault();
                this.on.last(index);
            },
        }));
        const finding = element('span', { class: 'finding', id: `point-finding-${index}` });
        const row = element('tr', {}, element('th', { scope: 'row' }, `${index + 1}`),
            ...inputs.map(input => element('td', {}, input)), element('td', { class: 'told' }, finding));
        this.body.append(row);
        return { row, inputs, finding };
    }

    // A row more than there are points takes the next one, while it is drawn.
    show(points, { vertex, findings = new Map(), at = '', more = null }) {
        const shown = more ? [...points, more] : points;
        while (this.rows.length > shown.length) this.rows.pop().row.remove();
        while (this.rows.length < shown.length) this.rows.push(this.row(this.rows.length));
        shown.forEach((point, index) => {
            const { row, inputs, finding } = this.rows[index];
            inputs.forEach((input, axis) => {
                if (!equal(parsed(input.value), point[axis] ?? '')) input.value = point[axis] ?? '';
            });
            const own = `/${at}/${index}`;
            const found = [...findings].filter(([key]) => key === own || key.startsWith(`${own}/`)).flatMap(([, list]) => list);
            finding.textContent = found.map(({ text }) => text).join(' ');
            row.classList.toggle('current', index === vertex);
        });
    }
}

