// A canvas at the screen's resolution, with the page's present colours.

export class Canvas {
  /** @param {HTMLCanvasElement} element */
  constructor(element) {
    this.element = element;
    this.pen = /** @type {CanvasRenderingContext2D} */ (element.getContext('2d'));
    this.width = 0; // CSS pixels
    this.height = 0;
    this.colours = this.presentColours();
    new ResizeObserver(() => this.fit()).observe(element);
    for (const query of ['(prefers-color-scheme: dark)', '(prefers-contrast: more)'])
      matchMedia(query).addEventListener('change', () => (this.colours = this.presentColours()));
    this.fit();
  }

  /** @private */
  presentColours() {
    const style = getComputedStyle(this.element);
    /** @param {string} name */
    const colour = (name) => style.getPropertyValue(`--${name}`).trim();
    return {
      back: colour('screen'),
      grid: colour('grid'),
      text: colour('muted'),
      input: colour('input'),
      left: colour('left'),
      right: colour('right'),
    };
  }

  /** @private */
  fit() {
    const scale = window.devicePixelRatio || 1;
    this.width = this.element.clientWidth;
    this.height = this.element.clientHeight;
    this.element.width = Math.round(this.width * scale);
    this.element.height = Math.round(this.height * scale);
    this.pen.setTransform(scale, 0, 0, scale, 0, 0);
    this.pen.lineJoin = 'round';
    this.pen.font = '11px system-ui, sans-serif';
  }

  clear() {
    this.pen.clearRect(0, 0, this.width, this.height);
  }

  /** @param {number} y @param {string} [text] */
  horizontal(y, text) {
    this.pen.fillStyle = this.colours.grid;
    this.pen.fillRect(0, Math.round(y), this.width, 1);
    if (text) this.label(text, 4, y - 3);
  }

  /** @param {number} x @param {string} text @param {number} y of the text */
  vertical(x, text, y) {
    this.pen.fillStyle = this.colours.grid;
    this.pen.fillRect(Math.round(x), 0, 1, this.height);
    this.label(text, x + 3, y);
  }

  /** @param {string} text @param {number} x @param {number} y */
  label(text, x, y) {
    // With a rim, so that it is read on any colour.
    this.pen.strokeStyle = this.colours.back;
    this.pen.lineWidth = 3;
    this.pen.strokeText(text, x, y);
    this.pen.fillStyle = this.colours.text;
    this.pen.fillText(text, x, y);
  }
}
