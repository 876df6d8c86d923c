// Writes an IFC4 model of three storeys whose bodies no coder makes small, for a block file of
// about 2 MB.
const storeys = 3;
const elements = 220; // on each
const corners = 250; // of each

let state = 1;
function random() {
  state = (Math.imul(state, 1664525) + 1013904223) >>> 0; // Numerical Recipes, section 7.1
  return (state / 2 ** 32) * 10;
}

const lines = [];
function add(text) {
  lines.push(`#${lines.length + 1}=${text};`);
  return `#${lines.length}`;
}
/** GlobalIds have 22 digits, of which the first is 0 to 3. */
const guid = () => `'${String(lines.length).padStart(22, "0")}'`;

const origin = add("IFCCARTESIANPOINT((0.,0.,0.))");
const axes = add(`IFCAXIS2PLACEMENT3D(${origin},$,$)`);
const place = add(`IFCLOCALPLACEMENT($,${axes})`);
const context = add(`IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-6,${axes},$)`);
const units = add(`IFCUNITASSIGNMENT((${add("IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.)")}))`);
const project = add(`IFCPROJECT(${guid()},$,'Large',$,$,$,$,(${context}),${units})`);

function addElement(number) {
  const points = Array.from({ length: corners }, () => `(${random()},${random()},${random()})`);
  const faces = Array.from({ length: corners - 2 }, (_, i) => `(1,${i + 2},${i + 3})`);
  const list = add(`IFCCARTESIANPOINTLIST3D((${points.join()}))`);
  const body = add(`IFCTRIANGULATEDFACESET(${list},$,.F.,(${faces.join()}),$)`);
  const form = add(`IFCSHAPEREPRESENTATION(${context},'Body','Tessellation',(${body}))`);
  const shape = add(`IFCPRODUCTDEFINITIONSHAPE($,$,(${form}))`);
  return add(`IFCBUILDINGELEMENTPROXY(${guid()},$,'Sheet ${number}',$,$,${place},${shape},$,$)`);
}

const floors = [];
for (let storey = 0; storey < storeys; ++storey) {
  floors.push(add(`IFCBUILDINGSTOREY(${guid()},$,'Storey ${storey}',$,$,${place},$,$,.ELEMENT.,${storey}.)`));
  const own = Array.from({ length: elements }, (_, i) => addElement(i));
  add(`IFCRELCONTAINEDINSPATIALSTRUCTURE(${guid()},$,$,$,(${own.join()}),${floors.at(-1)})`);
}
add(`IFCRELAGGREGATES(${guid()},$,$,$,${project},(${floors.join()}))`);

console.log(`ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('large.ifc','2026-01-01T00:00:00',(''),(''),'','','');
FILE_SCHEMA(('IFC4'));
ENDSEC;
DATA;
${lines.join("\n")}
ENDSEC;
END-ISO-10303-21;`);
