// A list of which one is chosen: role listbox, with the focus on its options. The choice follows the focus.

import { element } from './fields.js';

let lists = 0;

export class List {
    constructor(host, chosen) {
        this.host = host;
        this.chosen = chosen;
        this.items = [];
        this.prefix = `list-${++lists}`;
        host.addEventListener('keydown', event => this.key(event));
    }

    // Items have value, name, and state, which describes them.
    show(items, value) {
        this.items = items;
        const options = [...this.host.children];
        while (options.length > items.length) options.pop().remove();
        items.forEach((item, i) => this.update(options[i] ?? this.make(i), item, i, value));
    }

    make(i) {
        const option = element('div', { role: 'option', onclick: () => this.choose(i) },
            element('span', { class: 'name', dir: 'auto' }), element('span', { class: 'state', id: `${this.prefix}-${i}` }));
        this.host.append(option);
        return option;
    }

    update(option, { value, name, state = '' }, i, now) {
        const [shown, described] = option.children;
        if (shown.textContent !== name) shown.textContent = name;
        if (described.textContent !== state) described.textContent = state;
        option.title = name;
        option.setAttribute('aria-label', name);
        if (state) option.setAttribute('aria-describedby', described.id);
        else option.removeAttribute('aria-describedby');
        option.dataset.state = state.split(':')[0];
        const chosen = value === now;
        option.setAttribute('aria-selected', chosen);
        const any = this.items.some(item => item.value === now);
        option.tabIndex = chosen || (!any && i === 0) ? 0 : -1;
    }

    choose(i) {
        this.host.children[i]?.focus();
        if (this.items[i]) this.chosen(this.items[i].value);
    }

    key(event) {
        const at = [...this.host.children].indexOf(document.activeElement);
        const to = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: this.items.length - 1, Enter: at, ' ': at }[event.key];
        if (to === undefined) return;
        event.preventDefault();
        if (to >= 0 && to < this.items.length) this.choose(to);
    }
}
