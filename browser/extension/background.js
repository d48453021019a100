"use strict";

// Velmora's eyes and hands in the browser. Reports every top-frame navigation,
// page-history change, tab switch and window focus change to the Velmora program
// (through the native-messaging host), and sends a tab to the block page when
// the program says so. Every listener is registered at top level, so that an
// event wakes a stopped service worker and is not lost.

const api = globalThis.browser ?? globalThis.chrome;
const HOST = "app.velmora.host";
const PING_MS = 20000;
const FIRST_RETRY_MS = 1000;
const LAST_RETRY_MS = 60000;
// Addresses are cut to this many characters; the host travels whole beside them.
const MAX_ADDRESS = 8192;
const WINDOW_TYPES = ["normal", "popup", "panel", "app", "devtools"];

let port = null;
let retryMs = FIRST_RETRY_MS;
let retryTimer = null;
let focusedWindow = api.windows.WINDOW_ID_NONE;

function post(message) {
  if (!port) {
    return;
  }
  try {
    port.postMessage(message);
  } catch (error) {
    port = null;
    scheduleReconnect();
  }
}

function scheduleReconnect() {
  if (retryTimer !== null) {
    return;
  }
  retryTimer = setTimeout(() => {
    retryTimer = null;
    connect();
  }, retryMs);
  retryMs = Math.min(retryMs * 2, LAST_RETRY_MS);
}

function connect() {
  if (port) {
    return;
  }
  try {
    port = api.runtime.connectNative(HOST);
  } catch (error) {
    port = null;
    scheduleReconnect();
    return;
  }
  port.onMessage.addListener(obey);
  port.onDisconnect.addListener(() => {
    port = null;
    scheduleReconnect();
  });
  hello();
  reportFocusedWindow();
}

// Which browser this is, and whether the user let us into its private windows.
async function hello() {
  let product = "";
  try {
    if (api.runtime.getBrowserInfo) {
      product = (await api.runtime.getBrowserInfo()).name;
    } else {
      const brands = (navigator.userAgentData?.brands ?? []).map((b) => b.brand);
      product = brands.find((b) => !/chromium|not.a.brand/i.test(b)) ?? "Chromium";
    }
  } catch (error) {
    product = "";
  }
  const privateAllowed = await api.extension.isAllowedIncognitoAccess().catch(() => false);
  post({ kind: "hello", version: api.runtime.getManifest().version, product: product,
         privateAllowed: privateAllowed });
}

function obey(order) {
  if (!order || typeof order !== "object") {
    return;
  }
  // Any answer shows the program is there: the next drop retries quickly again.
  retryMs = FIRST_RETRY_MS;
  if (order.kind === "block" && Number.isInteger(order.tab) && typeof order.query === "string" &&
      order.query.startsWith("?")) {
    api.tabs.update(order.tab, { url: api.runtime.getURL("vlmr-focus.html") + order.query })
      .catch(() => {});
  } else if (order.kind === "query") {
    answerQuery();
  }
}

function hostOf(url) {
  try {
    return new URL(url).hostname;
  } catch (error) {
    return "";
  }
}

async function report(event, tabId, url) {
  if (tabId < 0 || !url) {
    return;
  }
  let tab = null;
  try {
    tab = await api.tabs.get(tabId);
  } catch (error) {
    return; // closed meanwhile
  }
  post({
    kind: "tab",
    event: event,
    tab: tabId,
    url: url.length > MAX_ADDRESS ? url.slice(0, MAX_ADDRESS) : url,
    host: hostOf(url),
    active: tab.active,
    focused: tab.windowId === focusedWindow,
    incognito: tab.incognito,
  });
}

// Asked what is in front: the browser's own word on its focused window, should
// an event have gone missing.
async function answerQuery() {
  const window = await api.windows.getLastFocused({ windowTypes: WINDOW_TYPES }).catch(() => null);
  focusedWindow = window && window.focused ? window.id : api.windows.WINDOW_ID_NONE;
  reportFocusedWindow();
}

// What has the focus: the active tab of one of our windows, one of our windows
// without a tab (developer tools), or nothing we can see (another program, or a
// private window the user has not let us into).
async function reportFocusedWindow() {
  if (focusedWindow === api.windows.WINDOW_ID_NONE) {
    post({ kind: "focus", focused: false });
    return;
  }
  const tabs = await api.tabs.query({ active: true, windowId: focusedWindow }).catch(() => []);
  if (tabs.length > 0) {
    report("activated", tabs[0].id, tabs[0].url || tabs[0].pendingUrl);
  } else {
    post({ kind: "focus", focused: true });
  }
}

api.webNavigation.onBeforeNavigate.addListener((details) => {
  if (details.frameId === 0) {
    report("before", details.tabId, details.url);
  }
});
api.webNavigation.onCommitted.addListener((details) => {
  if (details.frameId === 0) {
    report("committed", details.tabId, details.url);
  }
});
api.webNavigation.onHistoryStateUpdated.addListener((details) => {
  if (details.frameId === 0) {
    report("history", details.tabId, details.url);
  }
});
api.tabs.onActivated.addListener(async (info) => {
  const tab = await api.tabs.get(info.tabId).catch(() => null);
  if (tab) {
    report("activated", tab.id, tab.url || tab.pendingUrl);
  }
});
function focusChanged(windowId) {
  focusedWindow = windowId;
  // The user is at this browser: whatever the back-off says, try the program now.
  if (!port && windowId !== api.windows.WINDOW_ID_NONE) {
    clearTimeout(retryTimer);
    retryTimer = null;
    retryMs = FIRST_RETRY_MS;
    connect();
    return;
  }
  reportFocusedWindow();
}
// Developer tools windows count as ours: they are the browser's own.
try {
  api.windows.onFocusChanged.addListener(focusChanged, { windowTypes: WINDOW_TYPES });
} catch (error) {
  api.windows.onFocusChanged.addListener(focusChanged);
}

setInterval(() => post({ kind: "ping" }), PING_MS);

api.windows.getLastFocused().then((window) => {
  if (window && window.focused) {
    focusedWindow = window.id;
  }
  connect();
}, connect);
