// A browser lets a page that was opened as a file neither fetch its index nor start a worker. There
// the index comes as a script, and the worker of the search lives in a hidden frame. From a server
// nothing of this is done.
if (location.protocol === "file:") {
  document.write(`<script src="${document.currentScript.dataset.index}"></script>`);
  // The search looks for this name to know where it lives.
  window.IFrameWorker = window.Worker = class extends EventTarget {
    constructor(url) {
      super();
      const frame = document.createElement("iframe");
      frame.hidden = true;
      document.body.append(frame);
      this.inside = frame.contentWindow;
      addEventListener("message", (event) => {
        if (event.source === this.inside) this.dispatchEvent(new MessageEvent("message", {data: event.data}));
      });
      this.ready = new Promise((done) => {
        this.inside.ready = done;
        const page = this.inside.document;
        page.open();
        page.write(`<script>
          var toThem = parent;
          postMessage = (data) => toThem.postMessage(data, "*");
          var importScripts = (...urls) => urls.reduce((before, url) => before.then(() =>
            new Promise((done) => {
              const script = document.createElement("script");
              script.src = url;
              script.onload = done;
              document.body.append(script);
            })), Promise.resolve());
          </` + `script><body><script src="${url}" onload="ready()"></` + `script>`);
        page.close();
      });
    }
    postMessage(data) {
      this.ready.then(() => this.receive(data));
    }
    receive(data) {
      this.inside.dispatchEvent(new this.inside.MessageEvent("message", {data}));
    }
  };
}
