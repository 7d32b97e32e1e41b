// Bundles the page: page.html with its style and script inside, in which the writer of the program
// puts a run's title and data. Usage: node build.mjs OUTPUT
import { build } from "esbuild";
import { readFileSync, writeFileSync } from "node:fs";

const out = process.argv[2] ?? "page.html";
const bundle = async (entry, loader) => {
  const made = await build({
    entryPoints: [entry],
    bundle: true,
    minify: true,
    write: false,
    format: loader === "js" ? "iife" : undefined,
    target: ["es2022"],
    legalComments: "none",
    logLevel: "warning",
  });
  return made.outputFiles[0].text.trim();
};

const style = await bundle("src/style.css", "css");
const script = await bundle("src/main.ts", "js");
for (const [name, text] of [["style", style], ["script", script]]) {
  if (/<\/(style|script)|<!--/i.test(text)) throw new Error(`the ${name} would end its own element`);
}
// What is bundled asks to be named wherever it goes.
const licences = ["three", "uplot", "d3-scale-chromatic", "d3-interpolate", "d3-color"].map((name) => {
  const text = readFileSync(`node_modules/${name}/LICENSE`, "utf8").trim();
  if (text.includes("--")) throw new Error(`the licence of ${name} does not fit into a comment`);
  return `${name}\n\n${text}\n`;
});

// Replacements by function: a "$" in the bundle means itself.
const page = readFileSync("src/page.html", "utf8")
  .replace("/*STYLE*/", () => style)
  .replace("/*SCRIPT*/", () => script)
  .replace("LICENCES", () => licences.join("\n"));
writeFileSync(out, page);
