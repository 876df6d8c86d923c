// Writes an OBJ of sheets that no coder makes small, for a block file of about 3 MB.
const sheets = 300;
const corners = 300;

let state = 1;
function random() {
  state = (Math.imul(state, 1664525) + 1013904223) >>> 0; // Numerical Recipes, section 7.1
  return (state / 2 ** 32) * 10;
}

for (let sheet = 0; sheet < sheets; ++sheet) {
  const lines = [`o sheet ${sheet}`];
  for (let i = 0; i < corners; ++i) lines.push(`v ${random()} ${random()} ${random()}`);
  const first = sheet * corners + 1;
  for (let i = 1; i + 1 < corners; ++i) lines.push(`f ${first} ${first + i} ${first + i + 1}`);
  process.stdout.write(`${lines.join("\n")}\n`);
}
