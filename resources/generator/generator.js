// The settings generator: edits the settings document as lists of habits and
// activities, checks it against the settings schema as the user types, and hands
// the whole document to Velmora when it is saved.
"use strict";

const LISTS = {
  morningHabits: { one: "morning habit", isBreak: false },
  eveningHabits: { one: "evening habit", isBreak: false },
  breakActivities: { one: "break activity", isBreak: true },
};

const state = {
  doc: {},            // the document as it arrived; keys this page does not know are kept
  lists: { morningHabits: [], eveningHabits: [], breakActivities: [] },
  apps: [],           // installed applications: [{name, label}]
  schema: null,
  bridge: null,
  errors: [],
  unshown: {},        // stored times the time fields cannot show, kept until a new one is chosen
};

// Applications that open web addresses, by the names installed applications go by.
const BROWSERS = ["firefox", "firefox-esr", "org.mozilla.firefox", "chromium", "chromium-browser",
  "org.chromium.chromium", "google-chrome", "google-chrome-stable", "google-chrome-beta",
  "google-chrome-unstable", "com.google.chrome", "brave-browser", "com.brave.browser", "microsoft-edge",
  "microsoft-edge-stable", "microsoft-edge-beta", "com.microsoft.edge", "vivaldi", "vivaldi-stable",
  "com.vivaldi.vivaldi"];

let uid = 0;
const el = (tag, attrs = {}, ...children) => {
  const node = document.createElement(tag);
  for (const [key, value] of Object.entries(attrs)) {
    if (key === "text") node.textContent = value;
    else if (key.startsWith("on")) node.addEventListener(key.slice(2), value);
    else if (value === true) node.setAttribute(key, "");
    else if (value !== false && value !== undefined) node.setAttribute(key, value);
  }
  for (const child of children) if (child) node.append(child);
  return node;
};
const byId = (id) => document.getElementById(id);
const asArray = (v) => (Array.isArray(v) ? v : []);
const stringsOf = (v) => asArray(v).filter((s) => typeof s === "string");
const isObject = (v) => v !== null && typeof v === "object" && !Array.isArray(v);

// --- the program's calls ---------------------------------------------------------

// The stored document; a text is a document that could not be read as JSON.
window.loadSettingsDataFromMac = function (doc) {
  const problem = byId("load-problem");
  problem.hidden = true;
  if (typeof doc === "string") {
    try {
      doc = JSON.parse(doc);
    } catch (e) {
      problem.textContent = "Your stored settings could not be read, so you start from empty lists. " +
        "Saving replaces them.";
      problem.hidden = false;
      doc = {};
    }
  }
  state.doc = isObject(doc) ? doc : {};
  for (const kind of Object.keys(LISTS))
    state.lists[kind] = asArray(state.doc[kind]).filter(isObject).map((e) => ({ ...e }));
  state.unshown = {};
  for (const id of ["startTime", "shutOffTime"]) {
    byId(id).value = timeForInput(state.doc[id], id);
    if (id in state.doc && !byId(id).value) state.unshown[id] = state.doc[id];
  }
  byId("breakAfterMinutes").value = Number.isInteger(state.doc.breakAfterMinutes) ? state.doc.breakAfterMinutes : "";
  for (const kind of Object.keys(LISTS)) renderList(kind);
  check();
  document.body.dataset.loaded = "true";
};

window.LoadInstalledApps = function (message) {
  const names = isObject(message) ? stringsOf(message.installedApps) : [];
  const labels = isObject(message) && isObject(message.displayNames) ? message.displayNames : {};
  state.apps = names.map((name) => ({ name, label: typeof labels[name] === "string" ? labels[name] : name }));
  for (const kind of Object.keys(LISTS)) renderList(kind);
  check();
};

// --- times ---------------------------------------------------------------------------

// Velmora reads "7", "7:30" and "07:30:00" alike; the time field wants "07:30".
function timeForInput(value, id) {
  if (typeof value !== "string") return "";
  const parts = value.split(":");
  if (parts.length < 1 || parts.length > 3 || parts.some((p) => !/^\d+$/.test(p))) return "";
  const [h, m = "0", s = "0"] = parts.map(Number).map(String);
  if (+h > 23 || +m > 59 || +s > 59) return "";
  const pad = (n) => n.padStart(2, "0");
  if (+s !== 0) {
    byId(id).step = "1";
    return `${pad(h)}:${pad(m)}:${pad(s)}`;
  }
  return `${pad(h)}:${pad(m)}`;
}

// --- the lists -------------------------------------------------------------------------

function newEntry(kind) {
  const entry = { name: "", durationSeconds: 300, videoUrl: [], logQuantity: false, allowedUrls: [], allowedApps: [] };
  if (LISTS[kind].isBreak) Object.assign(entry, { includeInEveryBreak: false, isOfficeFriendly: false });
  return entry;
}

function renderList(kind, focus) {
  const list = byId(`${kind}-list`);
  list.replaceChildren(...state.lists[kind].map((entry, i) => card(kind, entry, i)));
  if (!state.lists[kind].length)
    list.append(el("li", { class: "empty", text: `No ${LISTS[kind].one} yet.` }));
  if (focus) {
    const target = byId(focus) || byId(`${kind}-add`);
    if (target) target.focus();
  }
}

function move(kind, index, delta, buttonRole) {
  const items = state.lists[kind];
  const to = index + delta;
  if (to < 0 || to >= items.length) return;
  [items[index], items[to]] = [items[to], items[index]];
  renderList(kind, `${kind}-${to}-${buttonRole}`);
  check();
}

function remove(kind, index) {
  state.lists[kind].splice(index, 1);
  const next = Math.min(index, state.lists[kind].length - 1);
  renderList(kind, next >= 0 ? `${kind}-${next}-name` : `${kind}-add`);
  check();
}

function add(kind) {
  state.lists[kind].push(newEntry(kind));
  renderList(kind, `${kind}-${state.lists[kind].length - 1}-name`);
  check();
}

// A labelled field whose errors and notes are shown next to it.
function field(id, path, labelText, input, extraClass, hint) {
  input.id = id;
  input.setAttribute("aria-describedby", `${id}-error ${id}-note`);
  return el("div", { class: `field ${extraClass || ""}`, "data-path": path },
    el("label", { for: id, text: labelText }), hint ? el("p", { class: "hint", text: hint }) : null, input,
    el("p", { class: "error", id: `${id}-error`, "aria-live": "polite" }),
    el("p", { class: "note", id: `${id}-note`, "aria-live": "polite" }));
}

function checkbox(id, path, labelText, checked, onChange) {
  const input = el("input", { type: "checkbox", id, onchange: (e) => onChange(e.target.checked) });
  input.checked = !!checked;
  input.setAttribute("aria-describedby", `${id}-error`);
  return el("div", { class: "field check", "data-path": path }, input, el("label", { for: id, text: labelText }),
    el("p", { class: "error", id: `${id}-error`, "aria-live": "polite" }),
    el("p", { class: "note", id: `${id}-note`, "aria-live": "polite" }));
}

function textInput(value, onInput, attrs = {}) {
  const input = el("input", { type: "text", ...attrs, oninput: (e) => { onInput(e.target.value); check(); } });
  input.value = value ?? "";
  return input;
}

// One address per line.
function linesInput(values, onInput) {
  const area = el("textarea", { rows: "2", oninput: (e) => {
    onInput(e.target.value.split("\n").map((s) => s.trim()).filter(Boolean));
    check();
  } });
  area.value = stringsOf(values).join("\n");
  return area;
}

function durationInput(id, path, entry) {
  // A duration that is not stored shows empty, not as "0 min 0 s".
  const total = Number.isInteger(entry.durationSeconds) ? entry.durationSeconds : null;
  const minutes = el("input", { type: "number", min: "0", step: "1", id: `${id}-min`, value: total === null ? "" : String(Math.floor(total / 60)) });
  const seconds = el("input", { type: "number", min: "0", max: "59", step: "1", id: `${id}-sec`, value: total === null ? "" : String(total % 60) });
  const update = () => {
    if (minutes.value === "" && seconds.value === "") {
      delete entry.durationSeconds;
    } else {
      const m = minutes.value === "" ? 0 : Number(minutes.value);
      const s = seconds.value === "" ? 0 : Number(seconds.value);
      entry.durationSeconds = Number.isFinite(m) && Number.isFinite(s) ? Math.round(m * 60 + s) : 0;
    }
    check();
  };
  minutes.addEventListener("input", update);
  seconds.addEventListener("input", update);
  for (const input of [minutes, seconds]) input.setAttribute("aria-describedby", `${id}-error`);
  return el("fieldset", { class: "field duration", "data-path": path },
    el("legend", { text: "Duration" }),
    el("label", { for: `${id}-min`, text: "Minutes" }), minutes,
    el("label", { for: `${id}-sec`, text: "Seconds" }), seconds,
    el("p", { class: "error", id: `${id}-error`, "aria-live": "polite" }));
}

// Installed applications as check boxes, with a filter; names in the document that
// are not installed here stay, marked so.
function appsPicker(id, path, entry) {
  const chosen = new Set(stringsOf(entry.allowedApps));
  const all = [...state.apps];
  for (const name of chosen)
    if (!all.some((a) => a.name === name)) all.push({ name, label: `${name} (not installed here)` });
  const options = el("div", { class: "apps", role: "group", "aria-labelledby": `${id}-title` });
  for (const [i, app] of all.entries()) {
    const boxId = `${id}-${i}`;
    const input = el("input", { type: "checkbox", id: boxId, onchange: (e) => {
      if (e.target.checked) chosen.add(app.name); else chosen.delete(app.name);
      entry.allowedApps = all.map((a) => a.name).filter((n) => chosen.has(n));
      check();
    } });
    input.checked = chosen.has(app.name);
    options.append(el("div", { class: "app", "data-name": `${app.label} ${app.name}`.toLowerCase() },
      input, el("label", { for: boxId, text: app.label })));
  }
  const filter = el("input", { type: "search", id: `${id}-filter`, oninput: (e) => {
    const q = e.target.value.trim().toLowerCase();
    for (const row of options.children) row.hidden = q !== "" && !row.dataset.name.includes(q);
  } });
  return el("div", { class: "field", "data-path": path },
    el("p", { class: "label", id: `${id}-title`, text: "Applications allowed during it" }),
    el("p", { class: "hint", text: "While it runs, the lock lifts for these applications." }),
    all.length ? el("label", { for: `${id}-filter`, text: "Find an application" }) : null,
    all.length ? filter : el("p", { class: "hint", text: "No installed applications are known." }),
    options,
    el("p", { class: "error", id: `${id}-error`, "aria-live": "polite" }),
    el("p", { class: "note", id: `${id}-note`, "aria-live": "polite" }));
}

function quantityFields(id, path, entry) {
  const question = field(`${id}-question`, `${path}/logQuantityQuestion`, "Question to ask",
    textInput(entry.logQuantityQuestion, (v) => { entry.logQuantityQuestion = v; }));
  question.hidden = !entry.logQuantity;
  const box = checkbox(`${id}-logQuantity`, `${path}/logQuantity`, "Ask how much was done afterwards", entry.logQuantity,
    (on) => {
      entry.logQuantity = on;
      question.hidden = !on;
      if (!on && !entry.logQuantityQuestion) delete entry.logQuantityQuestion;
      check();
    });
  return [box, question];
}

function choicesEditor(id, path, entry) {
  const wrap = el("div", { class: "choices" });
  const render = (focusId) => {
    // A document without alternatives keeps none until one is added.
    const choices = Array.isArray(entry.choices) ? entry.choices : [];
    const rows = choices.map((choice, i) => {
      if (!isObject(choice)) return el("li", { class: "choice", text: "An alternative that is not an object; remove it in the Advanced editor." });
      const cid = `${id}-choice-${i}`;
      const cpath = `${path}/choices/${i}`;
      const moveChoice = (delta, role) => {
        const to = i + delta;
        if (to < 0 || to >= choices.length) return;
        [choices[i], choices[to]] = [choices[to], choices[i]];
        render(`${id}-choice-${to}-${role}`);
        check();
      };
      return el("li", { class: "choice" },
        field(`${cid}-name`, `${cpath}/name`, `Alternative ${i + 1}: name`,
          textInput(choice.name, (v) => { choice.name = v; })),
        field(`${cid}-videos`, `${cpath}/videoUrl`, "Video addresses (one a line)",
          linesInput(choice.videoUrl, (v) => { choice.videoUrl = v; })),
        ...quantityFields(cid, cpath, choice),
        el("div", { class: "row-buttons" },
          el("button", { type: "button", id: `${cid}-up`, disabled: i === 0, text: "Move up", onclick: () => moveChoice(-1, "up") }),
          el("button", { type: "button", id: `${cid}-down`, disabled: i === choices.length - 1, text: "Move down", onclick: () => moveChoice(1, "down") }),
          el("button", { type: "button", id: `${cid}-remove`, text: "Remove alternative", onclick: () => {
            choices.splice(i, 1);
            render(`${id}-add-choice`);
            check();
          } })));
    });
    wrap.replaceChildren(el("ol", {}, ...rows),
      el("button", { type: "button", id: `${id}-add-choice`, text: "Add alternative", onclick: () => {
        choices.push({ name: "", videoUrl: [], logQuantity: false });
        entry.choices = choices;
        render(`${id}-choice-${choices.length - 1}-name`);
        check();
      } }));
    if (focusId && byId(focusId)) byId(focusId).focus();
  };
  render();
  wrap.hidden = entry.type !== "random-choice";
  return wrap;
}

function card(kind, entry, i) {
  const id = `${kind}-${i}`;
  const path = `${kind}/${i}`;
  const count = state.lists[kind].length;
  const title = el("h3", { id: `${id}-title`, text: entry.name || `New ${LISTS[kind].one}` });
  const own = [
    field(`${id}-videos`, `${path}/videoUrl`, "Video addresses (one a line)",
      linesInput(entry.videoUrl, (v) => { entry.videoUrl = v; })),
    ...quantityFields(id, path, entry),
  ];
  // With alternatives the one picked brings its own videos and question.
  const showOwn = () => { for (const node of own) node.classList.toggle("replaced", entry.type === "random-choice"); };
  showOwn();
  const fields = [
    field(`${id}-name`, `${path}/name`, "Name", textInput(entry.name, (v) => {
      entry.name = v;
      title.textContent = v || `New ${LISTS[kind].one}`;
    })),
    durationInput(`${id}-duration`, `${path}/durationSeconds`, entry),
    ...own,
    appsPicker(`${id}-apps`, `${path}/allowedApps`, entry),
    field(`${id}-urls`, `${path}/allowedUrls`, "Web addresses allowed during it (one a line)",
      linesInput(entry.allowedUrls, (v) => { entry.allowedUrls = v; }), "",
      "They open only in a browser allowed among the applications above."),
  ];
  if (LISTS[kind].isBreak) {
    const choices = choicesEditor(id, path, entry);
    fields.push(
      checkbox(`${id}-every`, `${path}/includeInEveryBreak`, "In every break", entry.includeInEveryBreak,
        (on) => { entry.includeInEveryBreak = on; check(); }),
      checkbox(`${id}-office`, `${path}/isOfficeFriendly`, "Office-friendly (kept in office mode)", entry.isOfficeFriendly,
        (on) => { entry.isOfficeFriendly = on; check(); }),
      checkbox(`${id}-random`, `${path}/type`, "Do one of several alternatives, picked at random", entry.type === "random-choice",
        (on) => {
          if (on) entry.type = "random-choice"; else delete entry.type;
          choices.hidden = !on;
          showOwn();
          check();
        }),
      choices);
  }
  return el("li", { class: "item", "aria-labelledby": `${id}-title` },
    el("div", { class: "item-head" }, title,
      el("div", { class: "row-buttons" },
        el("button", { type: "button", id: `${id}-up`, disabled: i === 0, text: "Move up", onclick: () => move(kind, i, -1, "up") }),
        el("button", { type: "button", id: `${id}-down`, disabled: i === count - 1, text: "Move down", onclick: () => move(kind, i, 1, "down") }),
        el("button", { type: "button", id: `${id}-remove`, class: "danger", text: "Remove", onclick: () => remove(kind, i) }))),
    el("div", { class: "item-fields" }, ...fields));
}

// --- the document -------------------------------------------------------------------------

function currentDocument() {
  const doc = { ...state.doc };
  for (const kind of Object.keys(LISTS)) doc[kind] = state.lists[kind].map((e) => ({ ...e }));
  for (const id of ["startTime", "shutOffTime"]) {
    const value = byId(id).value;
    if (value) doc[id] = value;
    else if (id in state.unshown) doc[id] = state.unshown[id];
    else delete doc[id];
  }
  const minutes = byId("breakAfterMinutes").value;
  if (minutes === "") delete doc.breakAfterMinutes;
  else doc.breakAfterMinutes = Number(minutes);
  return doc;
}

// --- the schema's rules, as far as the page shows them ---------------------------------------

function resolve(schema, root) {
  let s = schema;
  for (let depth = 0; isObject(s) && typeof s.$ref === "string" && depth < 16; ++depth) {
    if (!s.$ref.startsWith("#/")) return {};
    s = s.$ref.slice(2).split("/").reduce((node, key) => (isObject(node) ? node[key] : undefined), root);
  }
  return isObject(s) ? s : {};
}

const typeOk = {
  object: isObject, array: Array.isArray, string: (v) => typeof v === "string",
  integer: Number.isInteger, number: (v) => typeof v === "number" && Number.isFinite(v),
  boolean: (v) => typeof v === "boolean", null: (v) => v === null,
};

function validate(value, schema, root, path, errors) {
  const s = resolve(schema, root);
  const at = path.join("/");
  if (s.type) {
    const types = Array.isArray(s.type) ? s.type : [s.type];
    if (!types.some((t) => typeOk[t] && typeOk[t](value))) {
      errors.push({ path: at, message: `Must be ${types.map(describeType).join(" or ")}.` });
      return;
    }
  }
  if (Array.isArray(s.enum) && !s.enum.some((v) => JSON.stringify(v) === JSON.stringify(value)))
    errors.push({ path: at, message: `Must be one of ${s.enum.map((v) => JSON.stringify(v)).join(", ")}.` });
  if (typeof value === "number") {
    if (typeof s.minimum === "number" && value < s.minimum) errors.push({ path: at, message: `Must be at least ${s.minimum}.` });
    if (typeof s.maximum === "number" && value > s.maximum) errors.push({ path: at, message: `Must be at most ${s.maximum}.` });
  }
  if (typeof value === "string") {
    if (typeof s.minLength === "number" && value.length < s.minLength)
      errors.push({ path: at, message: s.minLength === 1 ? "Must not be empty." : `Needs at least ${s.minLength} characters.` });
    if (typeof s.maxLength === "number" && value.length > s.maxLength)
      errors.push({ path: at, message: `Must be at most ${s.maxLength} characters.` });
    if (typeof s.pattern === "string") {
      let re = null;
      try { re = new RegExp(s.pattern, "u"); } catch (e) { re = null; }
      if (re && !re.test(value)) errors.push({ path: at, message: s.description || `Does not match ${s.pattern}.` });
    }
  }
  if (Array.isArray(value)) {
    if (typeof s.minItems === "number" && value.length < s.minItems) errors.push({ path: at, message: `Needs at least ${s.minItems} entries.` });
    if (s.items) value.forEach((v, i) => validate(v, s.items, root, [...path, i], errors));
  }
  if (isObject(value)) {
    for (const key of asArray(s.required))
      if (!(key in value)) errors.push({ path: [...path, key].join("/"), message: "Is required." });
    if (isObject(s.properties))
      for (const [key, sub] of Object.entries(s.properties))
        if (key in value) validate(value[key], sub, root, [...path, key], errors);
  }
}

function describeType(t) {
  return { integer: "a whole number", number: "a number", string: "text", boolean: "yes or no",
    array: "a list", object: "an object", null: "empty" }[t] || t;
}

// What the schema cannot say: what an empty or unshowable field means to the day (notes),
// and alternatives that are missing (errors).
const EMPTY_NOTES = {
  startTime: "Without a start time Velmora keeps no schedule: no routines, no breaks, no lock at night.",
  shutOffTime: "Without a shut-off time Velmora keeps no schedule: no routines, no breaks, no lock at night.",
  breakAfterMinutes: "Without an interval Velmora asks for no breaks.",
};

function pageRules(doc, errors, notes) {
  for (const id of Object.keys(EMPTY_NOTES)) {
    if (id in state.unshown) {
      const stored = JSON.stringify(state.unshown[id]);
      notes.push({ path: id, message: /^\d{1,2}(:\d{2}(:\d{2})?)?$/.test(String(state.unshown[id]))
        ? `The stored time ${stored} is no time of day, so Velmora keeps no schedule. It stays until you choose a time here.`
        : `The stored time ${stored} cannot be shown here. It stays until you choose a time here.` });
    } else if (!(id in doc)) {
      notes.push({ path: id, message: EMPTY_NOTES[id] });
    }
  }
  for (const kind of Object.keys(LISTS)) {
    asArray(doc[kind]).forEach((entry, i) => {
      if (!isObject(entry)) return;
      const path = `${kind}/${i}`;
      if (stringsOf(entry.allowedUrls).length && !stringsOf(entry.allowedApps).some((a) => BROWSERS.includes(a)))
        notes.push({ path: `${path}/allowedUrls`,
          message: "No browser is among the allowed applications, so these addresses cannot be opened." });
      if (entry.type === "random-choice") {
        if (!asArray(entry.choices).length)
          errors.push({ path: `${path}/type`, message: "Add at least one alternative below, or untick this." });
        notes.push({ path: `${path}/type`,
          message: "The alternative picked brings its own videos and question; this activity's own are kept, unused." });
      }
    });
  }
}

// Finds the field of the path itself, or the nearest field above it.
function fieldOf(path) {
  for (;;) {
    const node = document.querySelector(`.field[data-path="${CSS.escape(path)}"]`);
    if (node || !path) return node;
    path = path.includes("/") ? path.slice(0, path.lastIndexOf("/")) : "";
  }
}

// Shows each error and note next to its field.
function check() {
  const errors = [];
  const notes = [];
  const doc = currentDocument();
  if (state.schema) validate(doc, state.schema, state.schema, [], errors);
  pageRules(doc, errors, notes);
  for (const error of errors)
    if (error.message === "Is required." && error.path.endsWith("/durationSeconds"))
      error.message = "No duration is stored: enter minutes and seconds.";
  state.errors = errors;
  for (const node of document.querySelectorAll(".field")) {
    node.classList.remove("invalid");
    for (const out of node.querySelectorAll(":scope > .error, :scope > .note")) out.textContent = "";
    for (const input of node.querySelectorAll(":scope > input, :scope > textarea")) input.removeAttribute("aria-invalid");
  }
  for (const note of notes) {
    const out = fieldOf(note.path)?.querySelector(":scope > .note");
    if (out) out.textContent = [out.textContent, note.message].filter(Boolean).join(" ");
  }
  const unplaced = [];
  for (const error of errors) {
    const node = fieldOf(error.path);
    if (!node) { unplaced.push(error); continue; }
    node.classList.add("invalid");
    const out = node.querySelector(":scope > .error");
    if (out) out.textContent = [out.textContent, error.message].filter(Boolean).join(" ");
    for (const input of node.querySelectorAll(":scope > input, :scope > textarea")) input.setAttribute("aria-invalid", "true");
  }
  const summary = byId("summary");
  summary.hidden = !unplaced.length;
  summary.textContent = unplaced.map((e) => `${e.path || "Settings"}: ${e.message}`).join(" ");
  return errors;
}

function save() {
  const errors = check();
  const summary = byId("summary");
  if (errors.length) {
    summary.hidden = false;
    summary.textContent = `${errors.length === 1 ? "One field needs" : `${errors.length} fields need`} ` +
      "your attention before saving; each is marked in red." + (summary.textContent ? ` ${summary.textContent}` : "");
    const first = document.querySelector(".field.invalid input, .field.invalid textarea");
    if (first) first.focus();
    return;
  }
  const text = JSON.stringify(currentDocument(), null, 2);
  if (state.bridge) {
    state.bridge.postMessage("setting_saved", text);
    summary.hidden = false;
    summary.classList.add("ok");
    summary.textContent = "Your settings went to Velmora to be checked; it answers in a window of its own.";
    return;
  }
  // Opened outside Velmora: the settings are shown to be copied.
  byId("export").hidden = false;
  byId("export-text").value = text;
  byId("export-text").focus();
}

// --- start ---------------------------------------------------------------------------------

function start() {
  for (const kind of Object.keys(LISTS)) {
    byId(`${kind}-add`).addEventListener("click", () => add(kind));
    renderList(kind);
  }
  for (const id of ["startTime", "shutOffTime", "breakAfterMinutes"])
    byId(id).addEventListener("input", () => { delete state.unshown[id]; check(); });
  byId("save").addEventListener("click", save);
  if (window.qt && window.qt.webChannelTransport && window.QWebChannel) {
    new QWebChannel(window.qt.webChannelTransport, (channel) => {
      state.bridge = channel.objects.bridge;
      try { state.schema = JSON.parse(state.bridge.schema || "null"); } catch (e) { state.schema = null; }
      state.bridge.pageReady();
    });
  } else {
    window.loadSettingsDataFromMac({});
  }
}

start();
