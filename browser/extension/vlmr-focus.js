"use strict";

// Everything taken from the address is untrusted: it is only ever shown
// through textContent, so markup in it stays visible text.
(function () {
  var params = new URLSearchParams(window.location.search);
  var oldUrl = params.get("old_url") || "";
  var blockType = params.get("block_type") || "";
  var focusMode = params.get("focus_mode") || "";
  var endTime = params.get("focus_mode_end_time") || "";

  var headings = {
    "always-blocked": "This page is on your always-blocked list",
    "morning-habit": "This page is not part of your morning habit",
    "evening-habit": "This page is not part of your evening habit",
    "break-activity": "This page is not part of your break"
  };
  var reasons = {
    "always-blocked": "You chose to keep this one away. Back to what matters.",
    "morning-habit": "Finish the habit first. The page will wait.",
    "evening-habit": "Finish the habit first. The page will wait.",
    "break-activity": "Enjoy the break. The page will wait."
  };

  function show(rowId, valueId, text) {
    if (text === "") {
      return;
    }
    document.getElementById(valueId).textContent = text;
    document.getElementById(rowId).hidden = false;
  }

  // The end time arrives as date, "T" and a clock time; the clock time is
  // what the reader needs.
  function clockTime(text) {
    var match = /T(\d{1,2}):(\d{2})/.exec(text);
    return match ? match[1] + ":" + match[2] : text;
  }

  if (Object.prototype.hasOwnProperty.call(headings, blockType)) {
    document.getElementById("heading").textContent = headings[blockType];
    document.getElementById("reason").textContent = reasons[blockType];
  }

  show("focus-row", "focus-mode", focusMode);
  show("end-row", "end-time", clockTime(endTime));
  show("url-row", "old-url", oldUrl);

  var logo = document.getElementById("logo");
  function hideLogo() {
    logo.hidden = true;
  }
  logo.addEventListener("error", hideLogo);
  if (logo.complete && logo.naturalWidth === 0) {
    hideLogo();
  }
})();
