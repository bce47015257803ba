// Elements of the page. Texts come from images: they only ever become text nodes and attributes that run nothing.

/** @typedef {string | Node | null | undefined | false} Child */

/** @param {string} tag
 * @param {Record<string, string | boolean | number | ((event: any) => void)>} [attributes] "on..." is a listener
 * @param {Child[]} children
 * @returns {HTMLElement} */
function element(tag, attributes = {}, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (typeof value === "function")
            made.addEventListener(name.slice(2), value);
        else if (value === true)
            made.setAttribute(name, "");
        else if (value !== false)
            made.setAttribute(name, String(value));
    }
    append(made, ...children);
    return made;
}

/** @param {Node} parent
 * @param {Child[]} children */
function append(parent, ...children) {
    for (const child of children) {
        if (child)
            parent.appendChild(typeof child === "string" ? document.createTextNode(child) : child);
    }
}

/** @param {string} text
 * @param {(event: MouseEvent) => void} act
 * @param {Record<string, string | boolean | number>} [attributes] */
function button(text, act, attributes = {}) {
    return element("button", {type: "button", ...attributes, onclick: act}, text);
}

/** A button that shows something below on demand, made at the first time.
 * @param {string} text
 * @param {HTMLElement} host
 * @param {() => Child[]} make */
function disclosure(text, host, make) {
    let made = false;
    host.hidden = true;
    const toggle = button(text, () => {
        if (!made)
            append(host, ...make());
        made = true;
        host.hidden = !host.hidden;
        toggle.setAttribute("aria-expanded", String(!host.hidden));
    }, {"aria-expanded": "false"});
    return toggle;
}

/** Calls `enter` when the element comes near the view, and `leave` when it is far away again.
 * @type {Map<Element, {enter(): void, leave(): void, isIn: boolean}>} */
const lazies = new Map();

/** @param {IntersectionObserverEntry[]} entries
 * @param {boolean} isNear */
function observed(entries, isNear) {
    for (const entry of entries) {
        const lazy = lazies.get(entry.target);
        if (!lazy || lazy.isIn === entry.isIntersecting || entry.isIntersecting !== isNear || isOnPaper && !isNear)
            continue;
        lazy.isIn = entry.isIntersecting;
        if (lazy.isIn)
            lazy.enter();
        else
            lazy.leave();
    }
}
const nearObserver = new IntersectionObserver(entries => observed(entries, true), {rootMargin: "300px 0px"});
const farObserver = new IntersectionObserver(entries => observed(entries, false), {rootMargin: "1500px 0px"});

/** @param {Element} target
 * @param {() => void} enter
 * @param {() => void} leave */
function lazily(target, enter, leave) {
    lazies.set(target, {enter, leave, isIn: false});
    nearObserver.observe(target);
    farObserver.observe(target);
}

/** What is in the element is about to go.
 * @param {Element} host */
function forgetLazies(host) {
    for (const target of [...lazies.keys()]) {
        if (target === host || !host.contains(target))
            continue;
        nearObserver.unobserve(target);
        farObserver.unobserve(target);
        lazies.delete(target);
    }
}

let isOnPaper = false;

/** For paper, everything has to be there. */
function enterAll() {
    isOnPaper = true;
    // What is entered may hold further ones.
    for (let count = -1; count !== lazies.size;) {
        count = lazies.size;
        for (const lazy of [...lazies.values()]) {
            if (!lazy.isIn) {
                lazy.isIn = true;
                lazy.enter();
            }
        }
    }
}

/** On the screen again, what is far away goes. */
function leaveFar() {
    isOnPaper = false;
    for (const target of lazies.keys()) {
        farObserver.unobserve(target);
        farObserver.observe(target);
    }
}

const announcer = element("p", {class: "unseen", "aria-live": "polite"});

/** @param {string} text */
function announce(text) {
    announcer.textContent = text;
}

/** @param {string} text
 * @param {string} what */
async function copyText(text, what) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        const area = /** @type {HTMLTextAreaElement} */ (element("textarea", {class: "unseen", "aria-hidden": "true"}));
        area.value = text;
        document.body.appendChild(area);
        area.select();
        document.execCommand("copy");
        area.remove();
    }
    announce(what + " copied");
}

/** @param {string} name of a custom property of the style sheet */
function themeColor(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}
