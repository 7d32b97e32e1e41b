// Elements in short. Text goes in as text nodes: what comes from data is never markup.
type Content = Node | string | null | undefined | false;

export function el<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Record<string, string | number | boolean | ((event: Event) => void)> = {},
  ...content: Content[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === "function") element.addEventListener(name, value);
    else if (typeof value === "boolean") element.toggleAttribute(name, value);
    else element.setAttribute(name, String(value));
  }
  element.append(...content.filter((one): one is Node | string => Boolean(one)));
  return element;
}

const svg_space = "http://www.w3.org/2000/svg";

export function drawing(size: string, box: string, shapes: [string, Record<string, string>][]): SVGSVGElement {
  const svg = document.createElementNS(svg_space, "svg");
  svg.setAttribute("viewBox", box);
  svg.setAttribute("width", size);
  svg.setAttribute("height", size);
  svg.setAttribute("aria-hidden", "true");
  for (const [tag, attributes] of shapes) {
    const shape = document.createElementNS(svg_space, tag);
    for (const [name, value] of Object.entries(attributes)) shape.setAttribute(name, value);
    svg.append(shape);
  }
  return svg;
}

export function colour_of(name: string): string {
  return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}

export function is_narrow(): boolean {
  return window.innerWidth < 720;
}
