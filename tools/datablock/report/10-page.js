// The page from top to bottom.

const isMany = head.form === "family";

/** @param {Entry} entry
 * @param {boolean} [isGrouped] by what became of it
 * @returns {Child[]} */
function entryBadges(entry, isGrouped = false) {
    const badges = [];
    if (entry.wrong)
        badges.push(element("span", {class: "badge wrong"}, isMany ? entry.wrong + " damaged" : "damaged"));
    if (entry.change && entry.change !== "equal" && !(isGrouped && entry.change === "changed"))
        badges.push(element("span", {class: "badge changed"}, entry.change === "added" ? "only in B" : entry.change === "removed" ? "only in A" : "changed"));
    if (entry.odd)
        badges.push(element("span", {class: "badge odd"}, entry.odd.length + " far off"));
    return badges.flatMap(badge => [" ", badge]);
}

/** @param {Place} place */
function placeText(place) {
    const parts = [counted(place.size, "byte") + " at " + offsetText(place.offset)];
    if (place.checksum)
        parts.push("checksum " + place.checksum);
    if (place.crc)
        parts.push("CRC-32 " + place.crc);
    return parts.join(", ");
}

// -- who, and what is wrong

function damageSection() {
    const section = element("section", {id: "problems", "aria-labelledby": "problems-title"});
    const list = element("ul", {});
    const notes = element("ul", {});
    let damaged = 0;
    for (const [i, source] of head.sources.entries()) {
        const own = source.findings.filter(finding => finding.grade === "damage");
        damaged += own.length ? 1 : 0;
        for (const finding of source.findings) {
            const index = head.blocks.findIndex(entry => entry.id === finding.id);
            const place = "offset " + offsetText(finding.offset);
            const block = index < 0 ? finding.id === undefined ? null : "block " + finding.id
                                    : element("a", {href: "#block-" + index}, titleOf(head.blocks[index]) + " (" + finding.id + ")");
            append(finding.grade === "damage" ? list : notes, element("li", {}, head.sources.length > 1 && sourceLabel(i) + ": ",
                element("b", {}, finding.text), ", " + place, block && ", ", block));
        }
        for (const fact of source.facts) {
            if (fact.mark && !isMany)
                append(notes, element("li", {}, head.sources.length > 1 && sourceLabel(i) + ": ", fact.group + ", " + fact.label + ": ",
                    element("b", {}, fact.mark)));
        }
    }
    const count = list.childElementCount;
    append(section, element("h2", {id: "problems-title", class: count ? "bad" : "good"}, count === 0 ? "No damage found"
        : counted(count, "problem") + (isMany ? " in " + counted(damaged, "module") : "")));
    const few = 30;
    if (count > few) {
        const rest = element("ul", {});
        rest.append(...[...list.children].slice(few));
        append(section, list, element("details", {}, element("summary", {}, counted(rest.childElementCount, "further problem")), rest));
    } else if (count) {
        append(section, list);
    }
    if (notes.childElementCount)
        append(section, element("details", {open: !isMany && notes.childElementCount <= 6},
            element("summary", {}, counted(notes.childElementCount, "note")), notes));
    return section;
}

/** @param {Fact} fact */
function factText(fact) {
    return [fact.value ? fact.value : element("span", {class: "quiet"}, "not recorded"),
            fact.mark ? element("span", {class: "badge wrong"}, fact.mark) : null];
}

function factsSection() {
    const groups = new Map();
    for (const fact of head.sources[0].facts)
        groups.set(fact.group, [...groups.get(fact.group) || [], fact]);
    return element("section", {id: "facts", class: "facts", "aria-label": "Facts"}, ...[...groups].map(([group, facts]) =>
        element("div", {class: "group"}, element("h3", {}, group), element("dl", {}, .../** @type {Fact[]} */ (facts).flatMap(fact =>
            [element("dt", {}, fact.label), element("dd", {}, ...factText(fact))])))));
}

function comparedFacts() {
    const [a, b] = head.sources;
    const rows = a.facts.map(fact => ({group: fact.group, label: fact.label, a: /** @type {Fact | undefined} */ (fact), b:
        b.facts.find(other => other.group === fact.group && other.label === fact.label)}));
    for (const fact of b.facts) {
        if (!rows.some(row => row.group === fact.group && row.label === fact.label))
            rows.push({group: fact.group, label: fact.label, a: undefined, b: fact});
    }
    return element("section", {id: "facts", "aria-label": "Facts"}, scrolled("Facts of both", element("table", {},
        element("thead", {}, element("tr", {}, element("th", {scope: "col"}, "Fact"), element("th", {scope: "col"}, "A: " + a.name),
            element("th", {scope: "col"}, "B: " + b.name))),
        element("tbody", {}, ...rows.map(row => element("tr", {class: row.a?.value === row.b?.value ? "" : "changed"},
            element("th", {scope: "row"}, row.group + ": " + row.label), element("td", {}, ...row.a ? factText(row.a) : []),
            element("td", {}, ...row.b ? factText(row.b) : [])))))));
}

/** @param {string} label
 * @param {Child[]} children */
function scrolled(label, ...children) {
    return element("div", {class: "scroll", tabindex: "0", role: "group", "aria-label": label}, ...children);
}

/** @param {Source} source
 * @param {string} label
 * @param {string} [group] */
function factOf(source, label, group = "Module") {
    return source.facts.find(fact => fact.label === label && fact.group === group)?.value || "";
}

/** The modules of a family, the odd ones first. */
function sourcesSection() {
    const farthest = new Map();
    const places = new Map();
    for (const entry of head.blocks) {
        for (const [source, deviation] of entry.odd || []) {
            places.set(source, (places.get(source) || 0) + 1);
            farthest.set(source, Math.max(farthest.get(source) || 0, deviation));
        }
    }
    const order = head.sources.map((_, i) => i).sort((left, right) => (places.get(right) || 0) - (places.get(left) || 0) ||
        head.sources[right].findings.length - head.sources[left].findings.length || left - right);
    const odd = order.filter(i => places.has(i)).length;
    const row = (/** @type {number} */ i) => {
        const source = head.sources[i];
        const damage = source.findings.filter(finding => finding.grade === "damage").length;
        const mark = element("input", {type: "radio", name: "marked", "aria-label": "Mark " + source.name + " in all plots",
                                       onchange: () => markSource(i)});
        return element("tr", {class: places.has(i) ? "odd" : ""}, element("td", {}, mark),
            element("th", {scope: "row", title: source.name}, sourceLabel(i)),
            element("td", {}, places.has(i) ? element("span", {class: "badge odd"}, "in " + counted(places.get(i), "block") + ", up to " +
                deviationText(farthest.get(i))) : "no"),
            element("td", {}, damage ? element("span", {class: "badge wrong"}, counted(damage, "problem")) : "none"),
            element("td", {}, head.kinds[source.kind]),
            element("td", {}, factOf(source, "Serial number")), element("td", {}, factOf(source, "Production date")),
            element("td", {}, factOf(source, "Operating hours", "Service")));
    };
    const none = element("input", {type: "radio", name: "marked", checked: true, "aria-label": "Mark no module", onchange: () => markSource(-1)});
    return element("section", {id: "sources", "aria-labelledby": "sources-title"},
        element("h2", {id: "sources-title"}, counted(head.sources.length, "module") + (odd ? ", " + odd + " far off the others" : ", none far off the others")),
        element("p", {class: "quiet"}, "Far off is a module of whose points one lies more than 6 robust standard deviations (\u03c3 = 1.4826 MAD) from the median of all, and farther than is usual among the others. At least 5 modules are needed to judge."),
        element("div", {class: "scroll short", tabindex: "0", role: "group", "aria-label": "Modules"}, element("table", {},
            element("thead", {}, element("tr", {}, element("td", {}, none), ...["File", "Far off", "Damage", "Module", "Serial number", "Production date", "Operating hours"].map(
                name => element("th", {scope: "col"}, name)))), element("tbody", {}, ...order.map(row)))));
}

// -- the contents

function fillContents() {
    const nav = document.getElementById("contents");
    if (!nav)
        return;
    const search = /** @type {HTMLInputElement} */ (element("input", {type: "search", id: "search", placeholder: "Name or identifier",
        autocomplete: "off", oninput: () => filter()}));
    const count = element("p", {class: "quiet", role: "status"});
    const list = element("ol", {});
    /** @type {{item: HTMLElement, text: string}[]} */
    const items = [];
    let group = "";
    for (const [i, entry] of head.blocks.entries()) {
        const own = head.form === "comparison" ? entry.change === "equal" ? "Unchanged" : entry.change === "changed" ? "Changed" : "Only in one"
                  : head.kinds.length > 1 ? head.kinds[entry.kind] : "";
        if (own !== group) {
            group = own;
            append(list, element("li", {class: "grouphead"}, own));
        }
        const item = element("li", {}, element("a", {href: "#block-" + i}, titleOf(entry), " ", element("span", {class: "quiet"}, String(entry.id))),
            ...entryBadges(entry, true));
        items.push({item, text: [entry.key, entry.class, entry.id].join(" ").toLowerCase()});
        append(list, item);
    }
    const filter = () => {
        const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
        let shown = 0;
        for (const {item, text} of items) {
            item.hidden = !words.every(word => text.includes(word));
            shown += item.hidden ? 0 : 1;
        }
        count.textContent = words.length ? shown + " of " + counted(items.length, "block") : counted(items.length, "block");
    };
    search.addEventListener("keydown", event => {
        const first = items.find(({item}) => !item.hidden)?.item.querySelector("a");
        if (event.key === "Enter" && first)
            first.click();
    });
    filter();
    const details = /** @type {HTMLDetailsElement} */ (element("details", {}, element("summary", {}, "Contents"),
        element("label", {for: "search"}, "Search"), search, count, list));
    const wide = matchMedia("(min-width: 60rem)");
    details.open = wide.matches;
    wide.addEventListener("change", () => {
        details.open = wide.matches;
    });
    append(nav, details);
}

// -- the blocks

/** @param {Block} block */
function fieldsOf(block) {
    if (!block.fields.length)
        return null;
    if (block.places.length === 1) {
        return element("dl", {class: "values"}, ...block.fields.flatMap(field =>
            [element("dt", {}, field.name), element("dd", {}, field.texts[0] || "\u2212")]));
    }
    if (head.form === "comparison") {
        return scrolled("Values", element("table", {}, element("thead", {}, element("tr", {}, ...["Value", "A", "B"].map(name => element("th", {scope: "col"}, name)))),
            element("tbody", {}, ...block.fields.map(field => element("tr", {class: field.texts[0] === field.texts[1] ? "" : "changed"},
                element("th", {scope: "row"}, field.name), ...field.texts.map(text => element("td", {}, text)))))));
    }
    return element("dl", {class: "values"}, ...block.fields.flatMap(field => {
        const values = new Map();
        for (const [place, text] of field.texts.entries())
            values.set(text, [...values.get(text) || [], place]);
        const label = element("dt", {}, field.name);
        if (values.size === 1)
            return [label, element("dd", {}, field.texts[0] || "\u2212")];
        const sorted = [...values].sort((left, right) => right[1].length - left[1].length);
        const list = element("ul", {});
        const details = element("details", {ontoggle: () => {
            if (!list.firstChild)
                append(list, ...sorted.map(([text, where]) => element("li", {}, (text || "none") + ": " +
                    (where.length > 5 ? counted(where.length, "module") : where.map((/** @type {number} */ place) => sourceLabel(block.places[place].source)).join(", ")))));
        }}, element("summary", {}, values.size + " different values" + (sorted[0][1].length > 1 ? ", most often " + sorted[0][0] : "")), list);
        return [label, element("dd", {}, details)];
    }));
}

/** The layout and the bytes, of one of the places.
 * @param {Block} block */
function bytesPart(block) {
    const host = element("div", {});
    const show = (/** @type {number} */ place) => new BytesView(block, place).element;
    const chooser = () => {
        if (block.places.length === 1)
            return null;
        const select = /** @type {HTMLSelectElement} */ (element("select", {onchange: () => {
            view.replaceChildren(show(Number(select.value)));
        }}, ...block.places.map((place, i) => element("option", {value: i}, sourceLabel(place.source) + (head.form === "comparison" ? ": " + head.sources[place.source].name : "")))));
        return element("label", {class: "chooser"}, "Of ", select);
    };
    const view = element("div", {});
    const toggle = disclosure("Layout and bytes", host, () => {
        view.replaceChildren(show(0));
        return [chooser(), view];
    });
    return [element("div", {class: "tools"}, toggle), host];
}

/** Of many modules the values of all blocks together are more than a browser should hold.
 * @param {HTMLElement} body
 * @param {number} index */
function leaveBlock(body, index) {
    const large = 100000;
    if (!isMany || (document.getElementById("block-data-" + index)?.textContent || "").length < large)
        return;
    body.style.minHeight = body.offsetHeight + "px";
    forgetPlots(body);
    forgetLazies(body);
    for (const frame of [...markListeners.keys()]) {
        if (body.contains(frame))
            markListeners.delete(frame);
    }
    body.replaceChildren();
}

/** @param {Entry} entry
 * @param {number} index */
function blockSection(entry, index) {
    const title = titleOf(entry);
    const heading = element("h3", {id: "title-" + index, tabindex: "-1"}, title, " ", element("span", {class: "quiet"}, String(entry.id)), ...entryBadges(entry));
    const body = element("div", {class: "body"});
    const section = element("section", {id: "block-" + index, class: "block", "aria-labelledby": "title-" + index}, heading, body);
    const plotted = entry.tables.filter(Boolean).length;
    // So that the page is about as long as it will be, and a jump ends where it should.
    body.style.minHeight = 4 + entry.fields * 1.6 + plotted * 26 + (entry.tables.length - plotted) * 6 + "rem";
    lazily(section, () => {
        if (body.firstChild)
            return;
        const block = blockData(index);
        body.style.minHeight = "";
        const identity = [entry.class && entry.class !== title ? entry.class : "",
            entry.changedBytes ? counted(entry.changedBytes, "byte") + " changed" : "",
            ...block.places.length <= 2 ? block.places.map(place => (block.places.length > 1 ? sourceLabel(place.source) + ": " : "") + placeText(place)) : [
                "in " + counted(block.places.length, "module")]].filter(Boolean);
        append(body, element("p", {class: "identity"}, identity.join(" \u00b7 ")));
        append(body, fieldsOf(block));
        append(body, ...block.tables.map(table => tableView(table, block, title).show()));
        append(body, ...bytesPart(block));
    }, () => leaveBlock(body, index));
    return section;
}

function run() {
    const main = /** @type {HTMLElement} */ (document.getElementById("main"));
    const top = /** @type {HTMLElement} */ (document.getElementById("head"));
    const files = head.form === "module" ? head.sources[0].name + ", " + counted(head.sources[0].size, "byte") + ", " + counted(head.sources[0].blocks, "block")
                : head.form === "comparison" ? "A: " + head.sources[0].name + ", B: " + head.sources[1].name : counted(head.blocks.length, "block");
    append(top, element("p", {class: "quiet"}, files), announcer);
    append(main, damageSection(), isMany ? sourcesSection() : head.form === "comparison" ? comparedFacts() : factsSection(),
        head.remarks.length > 0 && element("ul", {class: "remarks"}, ...head.remarks.map(remark => element("li", {}, remark))));
    const blocks = element("section", {id: "blocks", tabindex: "-1", "aria-labelledby": "blocks-title"}, element("h2", {id: "blocks-title"}, "Blocks"));
    if (!head.blocks.length)
        append(blocks, element("p", {}, "There is no block in it."));
    let kind = -1;
    let hasUnchanged = false;
    for (const [i, entry] of head.blocks.entries()) {
        if (isMany && head.kinds.length > 1 && entry.kind !== kind) {
            kind = entry.kind;
            append(blocks, element("h2", {}, head.kinds[kind]));
        }
        if (entry.change === "equal" && !hasUnchanged) {
            hasUnchanged = true;
            append(blocks, element("h2", {}, "Unchanged"));
        }
        append(blocks, blockSection(entry, i));
    }
    append(main, blocks);
    fillContents();
    append(/** @type {HTMLElement} */ (document.getElementById("foot")), "Made by " + head.generator + ". Plots: dygraphs 2.2.1, MIT licence, notice in the source of this page.");
    const redrawAll = () => {
        for (const plot of plots)
            plot.redraw();
        for (const listener of markListeners.values())
            listener();
    };
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => isOnPaper || redrawAll());
    // On paper everything is there, in light colours and in the width of the paper.
    addEventListener("beforeprint", () => {
        document.documentElement.classList.add("printed");
        enterAll();
        redrawAll();
        // Lines drawn while a page is printed come out blank in some browsers, pixels do not.
        for (const canvas of document.querySelectorAll(".canvas canvas")) {
            const context = /** @type {HTMLCanvasElement} */ (canvas).getContext("2d");
            const {width, height} = /** @type {HTMLCanvasElement} */ (canvas);
            if (context && width && height)
                context.putImageData(context.getImageData(0, 0, width, height), 0, 0);
        }
    });
    addEventListener("afterprint", () => {
        document.documentElement.classList.remove("printed");
        leaveFar();
        redrawAll();
    });
    if (location.hash)
        document.querySelector(location.hash.replace(/[^#\w-]/g, ""))?.scrollIntoView();
}

run();
performance.mark("shown");
