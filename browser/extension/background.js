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
  post({ kind: "hello", version: api.runtime.getManifest().version });
  reportFocusedWindow();
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
    url: url,
    active: tab.active,
    focused: tab.windowId === focusedWindow,
  });
}

async function reportFocusedWindow() {
  if (focusedWindow === api.windows.WINDOW_ID_NONE) {
    post({ kind: "focus", focused: false });
    return;
  }
  const tabs = await api.tabs.query({ active: true, windowId: focusedWindow }).catch(() => []);
  if (tabs.length > 0) {
    report("activated", tabs[0].id, tabs[0].url);
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
api.windows.onFocusChanged.addListener((windowId) => {
  focusedWindow = windowId;
  reportFocusedWindow();
});

setInterval(() => post({ kind: "ping" }), PING_MS);

api.windows.getLastFocused().then((window) => {
  if (window && window.focused) {
    focusedWindow = window.id;
  }
  connect();
}, connect);
